#include "jpeg.hpp"

#include <cstdlib>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"
#include "video_source.hpp"

namespace qel::serve {
namespace {

using host::Picture;

Picture MakePicture(unsigned int width, unsigned int height, std::uint32_t colour) {
    Picture picture({width, height});
    for (std::uint32_t& pixel : picture.pixels) pixel = colour;
    return picture;
}

/// As others decode it.
Picture Decode(std::vector<std::uint8_t> const& jpeg) {
    qel::test::TemporaryDirectory const directory;
    std::string const path = directory / "picture.jpg";
    qel::test::WriteFile(path, {reinterpret_cast<char const*>(jpeg.data()), jpeg.size()});
    host::VideoSource source(host::Locate(path), {media::ColourFormat::Rgb24});
    auto const frame = source.Read();
    return frame ? host::ToPicture(*frame) : Picture();
}

TEST(EncodeJpeg, MakesWhatDecodersUnderstand) {
    for (Picture::Size const size : {Picture::Size{1, 1}, {17, 9}, {768, 576}}) {
        for (std::uint32_t const colour : {0xC02020U, 0x20C020U, 0x2020C0U}) {
            Picture const decoded = Decode(EncodeJpeg(MakePicture(size.width, size.height, colour), 90));
            ASSERT_EQ(decoded.size, size);
            for (std::uint32_t const pixel : decoded.pixels) {
                for (int shift : {0, 8, 16}) {
                    ASSERT_LE(std::abs(int(pixel >> shift & 0xFF) - int(colour >> shift & 0xFF)), 6)
                        << std::hex << pixel;
                }
            }
        }
    }
}

TEST(EncodeJpeg, TakesFewerBytesForLowerQuality) {
    Picture picture({64, 64});
    std::uint32_t noise = 1;
    for (std::uint32_t& pixel : picture.pixels) pixel = noise = noise * 1664525 + 1013904223;
    EXPECT_LT(EncodeJpeg(picture, 10).size(), EncodeJpeg(picture, 50).size());
    EXPECT_LT(EncodeJpeg(picture, 50).size(), EncodeJpeg(picture, 100).size());
}

TEST(EncodeJpeg, RefusesWhatTheFormatDoesNotHold) {
    auto const encode = [](unsigned int width, unsigned int height) { EncodeJpeg(MakePicture(width, height, 0), 80); };
    EXPECT_EQ(qel::test::MessageOf<host::Error>([&] { encode(0, 0); }),
              "cannot make a JPEG of 0 x 0 pixels: Empty JPEG image (DNL not supported)");
    EXPECT_EQ(qel::test::MessageOf<host::Error>([&] { encode(70000, 1); }),
              "cannot make a JPEG of 70000 x 1 pixels: Maximum supported image dimension is 65500 pixels");
    // It can be used again after an error.
    EXPECT_FALSE(EncodeJpeg(MakePicture(2, 2, 0), 80).empty());
}

}  // namespace
}  // namespace qel::serve
