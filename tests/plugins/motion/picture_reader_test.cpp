#include "picture_reader.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::motion {
namespace {

using media::ColourFormat;
using Frame = media::video::FrameBase<void const>;
using Plane = media::video::frame::PlaneBase<void const>;

Frame Wrap(ColourFormat format, unsigned int width, unsigned int height, Plane first, Plane second = {}) {
    return Frame({first, second, {}, {}}, format, width, height, {}, {}, {}, {});
}

std::vector<std::uint8_t> Noise(std::size_t count, unsigned int seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

std::string ErrorOf(Frame const& frame) {
    return qel::test::MessageOf<std::invalid_argument>([&] { PictureReader().Read(frame); });
}

TEST(PictureReader, LooksAtNv12AndGreyWhereTheyAre) {
    std::vector<std::uint8_t> const luma = Noise(8 * 3, 1), chroma = Noise(8 * 2, 2);
    PictureReader reader;
    Picture const nv12 = reader.Read(Wrap(ColourFormat::Nv12, 5, 3, {24, luma.data(), 8}, {16, chroma.data(), 8}));
    EXPECT_EQ(nv12.luma, luma.data());
    EXPECT_EQ(nv12.lumaStride, 8);
    EXPECT_EQ(nv12.chroma, chroma.data());
    EXPECT_EQ(nv12.chromaStride, 8);
    EXPECT_EQ(nv12.width, 5U);
    EXPECT_EQ(nv12.height, 3U);
    Picture const grey = reader.Read(Wrap(ColourFormat::Grey8, 5, 3, {24, luma.data(), 8}));
    EXPECT_EQ(grey.luma, luma.data());
    EXPECT_EQ(grey.chroma, nullptr);
}

/// Luma and chroma of a picture of three bytes a pixel, by floating point.
struct Expected {
    std::vector<double> luma, u, v;  // u and v: a value for 2 x 2 pixels
};

Expected Convert(std::vector<std::uint8_t> const& bytes, ColourFormat format, unsigned int width, unsigned int height,
                 std::size_t stride) {
    auto pixel = [&](unsigned int x, unsigned int y) -> std::array<double, 3> {
        std::uint8_t const* const p = &bytes[y * stride + 3 * x];
        if (format == ColourFormat::Yuv24) return {double(p[0]), double(p[1]), double(p[2])};
        double const r = p[format == ColourFormat::Rgb24 ? 0 : 2], g = p[1],
                     b = p[format == ColourFormat::Rgb24 ? 2 : 0];
        return {0.299 * r + 0.587 * g + 0.114 * b, 128 - 0.168736 * r - 0.331264 * g + 0.5 * b,
                128 + 0.5 * r - 0.418688 * g - 0.081312 * b};
    };
    Expected expected;
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x) expected.luma.push_back(pixel(x, y)[0]);
    }
    for (unsigned int y = 0; y < height; y += 2) {
        for (unsigned int x = 0; x < width; x += 2) {
            double u = 0, v = 0;
            for (unsigned int i = 0; i < 4; ++i) {
                auto const p = pixel(std::min(x + i % 2, width - 1), std::min(y + i / 2, height - 1));
                u += p[1] / 4;
                v += p[2] / 4;
            }
            expected.u.push_back(u);
            expected.v.push_back(v);
        }
    }
    return expected;
}

TEST(PictureReader, ConvertsThreeBytesAPixelToLumaAndHalfSizeChroma) {
    PictureReader reader;
    for (ColourFormat const format : {ColourFormat::Yuv24, ColourFormat::Rgb24, ColourFormat::Bgr24}) {
        for (auto const& [width, height] : {std::pair{1U, 1U}, {2U, 2U}, {5U, 3U}, {33U, 6U}, {64U, 1U}}) {
            SCOPED_TRACE(testing::Message() << int(format) << ": " << width << " x " << height);
            std::size_t const stride = 3 * width + 5;
            std::vector<std::uint8_t> const bytes = Noise(stride * height, width);
            Picture const picture =
                reader.Read(Wrap(format, width, height, {bytes.size(), bytes.data(), std::int64_t(stride)}));
            Expected const expected = Convert(bytes, format, width, height, stride);
            double const tolerance = format == ColourFormat::Yuv24 ? 0.5 : 1.6;
            for (unsigned int y = 0; y < height; ++y) {
                for (unsigned int x = 0; x < width; ++x) {
                    ASSERT_NEAR(picture.luma[y * picture.lumaStride + x], expected.luma[y * width + x], tolerance);
                }
            }
            unsigned int const pairs = (width + 1) / 2;
            for (unsigned int i = 0; i < pairs * ((height + 1) / 2); ++i) {
                std::uint8_t const* const pair = picture.chroma + i / pairs * picture.chromaStride + 2 * (i % pairs);
                ASSERT_NEAR(pair[0], expected.u[i], tolerance);
                ASSERT_NEAR(pair[1], expected.v[i], tolerance);
            }
        }
    }
}

TEST(PictureReader, KeepsColoursWithinAByte) {
    PictureReader reader;
    for (int const r : {0, 255}) {
        for (int const g : {0, 255}) {
            for (int const b : {0, 255}) {
                std::array<std::uint8_t, 3> const bytes = {std::uint8_t(r), std::uint8_t(g), std::uint8_t(b)};
                Picture const picture = reader.Read(Wrap(ColourFormat::Rgb24, 1, 1, {3, bytes.data(), 3}));
                EXPECT_NEAR(picture.luma[0], 0.299 * r + 0.587 * g + 0.114 * b, 1);
                EXPECT_NEAR(picture.chroma[0], std::min(255.0, 128 - 0.169 * r - 0.331 * g + 0.5 * b), 1.1);
                EXPECT_NEAR(picture.chroma[1], std::min(255.0, 128 + 0.5 * r - 0.419 * g - 0.081 * b), 1.1);
            }
        }
    }
}

TEST(PictureReader, RefusesWhatItCannotRead) {
    std::vector<std::uint8_t> const bytes(64);
    auto const* const data = bytes.data();
    EXPECT_THAT(ErrorOf(Frame()), testing::HasSubstr("it has no image"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat(5), 4, 4, {16, data, 4})), testing::EndsWith("its colour format is unknown"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat::Grey8, 4, 4, {15, data, 4})),
                testing::EndsWith("plane 0 is smaller than the image"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat::Grey8, 4, 4, {64, data, 3})),
                testing::EndsWith("plane 0 is smaller than the image"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat::Nv12, 4, 4, {16, data, 4}, {7, data, 4})),
                testing::EndsWith("plane 1 is smaller than the image"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat::Nv12, 4, 4, {16, data, 4})),
                testing::EndsWith("plane 1 is smaller than the image"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat::Bgr24, 4, 4, {47, data, 12})),
                testing::EndsWith("plane 0 is smaller than the image"));
    EXPECT_THAT(ErrorOf(Wrap(ColourFormat::Grey8, 4, 4, {16, data, 4})), testing::Eq("nothing was thrown"));
}

}  // namespace
}  // namespace qel::motion
