#include "crop.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"
#include "test_frame.hpp"

namespace qel::classifier {
namespace {

using inference::ChannelOrder;
using inference::Picture;
using Box = Cropper::Box;

/// Pixel (x, y) of a picture as red, green, blue.
TestFrame::Rgb At(Picture const& picture, unsigned int x, unsigned int y) {
    std::uint8_t const* const p =
        picture.first + static_cast<std::ptrdiff_t>(y) * picture.stride + std::size_t{x} * picture.channels;
    if (picture.channels == 1) return {p[0], p[0], p[0]};
    if (picture.order == ChannelOrder::Bgr) return {p[2], p[1], p[0]};
    return {p[0], p[1], p[2]};
}

void ExpectNear(TestFrame::Rgb const& found, TestFrame::Rgb const& expected) {
    EXPECT_NEAR(found.red, expected.red, 4);
    EXPECT_NEAR(found.green, expected.green, 4);
    EXPECT_NEAR(found.blue, expected.blue, 4);
}

TEST(Cropper, ShowsThePixelsOfTheBoxInEveryFormat) {
    for (ColourFormat const format :
         {ColourFormat::Nv12, ColourFormat::Yuv24, ColourFormat::Rgb24, ColourFormat::Bgr24}) {
        SCOPED_TRACE(static_cast<int>(format));
        TestFrame frame(format, 33, 21);
        frame.Paint(0, 0, 33, 21, Green);
        frame.Paint(8, 6, 12, 10, Red);
        frame.Paint(12, 6, 20, 10, Blue);
        Cropper cropper;
        auto const pictures = cropper.Crop(frame.Get(), {{8, 6, 20, 10}, {7, 5, 9, 7}, {31, 19, 33, 21}}, 0);
        ASSERT_EQ(pictures.size(), 3U);
        EXPECT_EQ(pictures[0].width, 12U);
        EXPECT_EQ(pictures[0].height, 4U);
        ExpectNear(At(pictures[0], 0, 0), Red);
        ExpectNear(At(pictures[0], 3, 3), Red);
        ExpectNear(At(pictures[0], 4, 0), Blue);
        ExpectNear(At(pictures[0], 11, 3), Blue);
        ExpectNear(At(pictures[1], 0, 0), Green);
        ExpectNear(At(pictures[1], 1, 1), Red);
        ExpectNear(At(pictures[2], 1, 1), Green);
    }
}

TEST(Cropper, ShowsGreyFramesAsTheyAre) {
    TestFrame frame(ColourFormat::Grey8, 9, 9);
    frame.Paint(3, 3, 9, 9, {200, 200, 200});
    Cropper cropper;
    auto const pictures = cropper.Crop(frame.Get(), {{2, 2, 5, 5}}, 0);
    EXPECT_EQ(pictures[0].channels, 1U);
    EXPECT_EQ(At(pictures[0], 0, 0).red, 0);
    EXPECT_EQ(At(pictures[0], 1, 1).red, 200);
}

TEST(Cropper, AddsTheMarginWithinTheFrame) {
    TestFrame const frame(ColourFormat::Nv12, 100, 50);
    struct Case {
        Box box;
        double margin;
        unsigned int width, height;
    } const cases[] = {
        {{40, 20, 60, 30}, 0, 20, 10},   {{40, 20, 60, 30}, 0.1, 24, 12},  {{40, 20, 60, 30}, 1, 60, 30},
        {{0, 0, 20, 10}, 0.5, 30, 15},   {{90, 40, 100, 50}, 0.5, 15, 15}, {{0, 0, 100, 50}, 1, 100, 50},
        {{90, 40, 400, 500}, 0, 10, 10}, {{100, 0, 120, 20}, 0, 0, 0},     {{5, 5, 5, 9}, 1, 0, 0},
        {{9, 5, 5, 9}, 1, 0, 0},         {{~0U - 1, 0, ~0U, 9}, 0, 0, 0},  {{0, 0, ~0U, ~0U}, 1, 100, 50},
    };
    Cropper cropper;
    for (Case const& c : cases) {
        auto const& picture = cropper.Crop(frame.Get(), {c.box}, c.margin)[0];
        EXPECT_EQ(std::pair(picture.width, picture.height), std::pair(c.width, c.height))
            << c.box.x0 << " " << c.box.x1;
    }
}

TEST(Cropper, RefusesFramesThatCannotBeRead) {
    Cropper cropper;
    auto const message = [&](TestFrame::Frame const& frame) {
        return test::MessageOf<std::invalid_argument>([&] { (void)cropper.Crop(frame, {}, 0); });
    };
    EXPECT_THAT(message({}), testing::EndsWith("it has no image"));
    std::vector<std::uint8_t> const bytes(100);
    TestFrame::Frame::Planes planes{};
    planes[0] = {bytes.size(), bytes.data(), 10};
    EXPECT_THAT(message({planes, ColourFormat::Rgb24, 10, 10, {}, {}, {}, {}}),
                testing::EndsWith("plane 0 is smaller than the image"));
    EXPECT_THAT(message({planes, ColourFormat::Nv12, 10, 10, {}, {}, {}, {}}),
                testing::EndsWith("plane 1 is smaller than the image"));
    EXPECT_EQ(message({planes, ColourFormat::Grey8, 10, 10, {}, {}, {}, {}}), "nothing was thrown");
}

}  // namespace
}  // namespace qel::classifier
