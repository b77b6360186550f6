#include "picture.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

#include <gtest/gtest.h>

#include "error.hpp"

namespace qel::host {
namespace {

using media::ColourFormat;
using Frame = media::video::FrameBase<void const>;
using Writable = media::video::FrameBase<void>;

Frame ReadOnly(Writable const& frame) {
    Frame::Planes planes;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        auto const& plane = frame.GetPlane(i);
        planes[i] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
    }
    return {planes, frame.GetColourFormat(), frame.GetSize(), {}, {}, frame.GetRef(), frame.GetUnref()};
}

std::uint8_t& At(Writable const& frame, std::size_t plane, std::size_t x, std::size_t y) {
    auto const& p = frame.GetPlane(plane);
    return static_cast<std::uint8_t*>(p.GetBuffer())[y * static_cast<std::size_t>(p.GetStride()) + x];
}

Writable Noise(ColourFormat format, unsigned int width, unsigned int height, unsigned int seed) {
    Writable frame(format, width, height, {}, {});
    std::mt19937 random(seed);
    for (auto const& plane : frame.GetPlanes()) {
        auto* const bytes = static_cast<std::uint8_t*>(plane.GetBuffer());
        for (std::size_t i = 0; i < plane.GetSize(); ++i) bytes[i] = static_cast<std::uint8_t>(random());
    }
    return frame;
}

struct Levels {
    int red, green, blue;
};

Levels LevelsOf(std::uint32_t pixel) {
    return {static_cast<int>(pixel >> 16), static_cast<int>(pixel >> 8 & 255), static_cast<int>(pixel & 255)};
}

/// BT.601 in floating point.
Levels FromYuv(int y, int u, int v) {
    double const luma = 255.0 / 219.0 * (y - 16);
    auto const level = [](double value) { return static_cast<int>(std::clamp(std::floor(value + 0.5), 0.0, 255.0)); };
    return {level(luma + 1.402 * 255 / 224 * (v - 128)),
            level(luma - 0.344136 * 255 / 224 * (u - 128) - 0.714136 * 255 / 224 * (v - 128)),
            level(luma + 1.772 * 255 / 224 * (u - 128))};
}

Levels Reference(Writable const& frame, std::size_t x, std::size_t y) {
    switch (frame.GetColourFormat()) {
        case ColourFormat::Grey8:
            return {At(frame, 0, x, y), At(frame, 0, x, y), At(frame, 0, x, y)};
        case ColourFormat::Rgb24:
            return {At(frame, 0, 3 * x, y), At(frame, 0, 3 * x + 1, y), At(frame, 0, 3 * x + 2, y)};
        case ColourFormat::Bgr24:
            return {At(frame, 0, 3 * x + 2, y), At(frame, 0, 3 * x + 1, y), At(frame, 0, 3 * x, y)};
        case ColourFormat::Yuv24:
            return FromYuv(At(frame, 0, 3 * x, y), At(frame, 0, 3 * x + 1, y), At(frame, 0, 3 * x + 2, y));
        default:
            return FromYuv(At(frame, 0, x, y), At(frame, 1, x / 2 * 2, y / 2), At(frame, 1, x / 2 * 2 + 1, y / 2));
    }
}

TEST(ToPicture, AgreesWithTheFormulaForEveryFormatAndSize) {
    for (int format = 0; format < 5; ++format) {
        for (auto const& [width, height] :
             {std::pair{1U, 1U}, std::pair{2U, 1U}, std::pair{5U, 3U}, std::pair{33U, 17U}}) {
            SCOPED_TRACE(format);
            SCOPED_TRACE(width);
            Writable const frame = Noise(static_cast<ColourFormat>(format), width, height, 7 + width);
            Picture const picture = ToPicture(ReadOnly(frame));
            ASSERT_EQ(picture.pixels.size(), std::size_t{width} * height);
            int const tolerance = format >= 3 ? 1 : 0;
            for (std::size_t y = 0; y < height; ++y) {
                for (std::size_t x = 0; x < width; ++x) {
                    Levels const got = LevelsOf(picture.pixels[y * width + x]);
                    Levels const wanted = Reference(frame, x, y);
                    ASSERT_NEAR(got.red, wanted.red, tolerance);
                    ASSERT_NEAR(got.green, wanted.green, tolerance);
                    ASSERT_NEAR(got.blue, wanted.blue, tolerance);
                }
            }
        }
    }
}

TEST(ToPicture, TurnsBlackAndWhiteOfVideoLevelsIntoFullOnes) {
    Writable const frame(ColourFormat::Yuv24, 3, 1, {}, {});
    std::uint8_t const pixels[] = {16, 128, 128, 235, 128, 128, 0, 128, 128};
    std::copy(std::begin(pixels), std::end(pixels), &At(frame, 0, 0, 0));
    EXPECT_EQ(ToPicture(ReadOnly(frame)).pixels, (std::vector<std::uint32_t>{0, 0xFFFFFF, 0}));
}

TEST(ToPicture, RefusesPlanesThatAreTooSmall) {
    std::uint8_t bytes[64] = {};
    auto const make = [&](ColourFormat format, std::uint64_t size, std::int64_t stride) {
        Frame::Planes planes;
        planes[0] = {size, bytes, stride};
        return Frame(planes, format, 4, 4, {}, {}, {}, {});
    };
    EXPECT_NO_THROW(ToPicture(make(ColourFormat::Grey8, 16, 4)));
    EXPECT_NO_THROW(ToPicture(make(ColourFormat::Grey8, 3 * 8 + 4, 8)));
    EXPECT_THROW(ToPicture(make(ColourFormat::Grey8, 15, 4)), Error);
    EXPECT_THROW(ToPicture(make(ColourFormat::Grey8, 16, 3)), Error);
    EXPECT_THROW(ToPicture(make(ColourFormat::Grey8, 16, -4)), Error);
    EXPECT_THROW(ToPicture(make(ColourFormat::Rgb24, 16, 4)), Error);
    EXPECT_THROW(ToPicture(make(ColourFormat::Nv12, 16, 4)), Error);
    EXPECT_THROW(ToPicture(make(static_cast<ColourFormat>(9), 16, 4)), Error);
}

TEST(ToPicture, GivesAnEmptyPictureOfAnEmptyFrame) { EXPECT_TRUE(ToPicture(Frame()).pixels.empty()); }

}  // namespace
}  // namespace qel::host
