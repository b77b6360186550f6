#include "common/frame_check.hpp"

#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::plugin {
namespace {

using media::ColourFormat;
using testing::EndsWith;
using testing::StartsWith;
using Frame = media::video::FrameBase<void const>;

/// A frame of 4 x 3 pixels whose one plane is what a test says.
Frame MakeFrame(std::uint64_t size, void const* buffer, std::int64_t stride) {
    return {
        {media::video::frame::PlaneBase<void const>(size, buffer, stride)}, ColourFormat::Grey8, 4, 3, {}, {}, {}, {}};
}

std::string RefusalOf(Frame const& frame, std::size_t index = 0) {
    return test::MessageOf<std::invalid_argument>([&] {
        FrameCheck const check("Cannot look at the frame", frame);
        (void)check.GetPlane(index, 4, 3);
    });
}

TEST(FrameCheck, GivesTheFirstByteOfAPlaneThatHoldsTheImage) {
    std::vector<std::uint8_t> const pixels(100);
    struct Case {
        std::uint64_t size;
        std::int64_t stride;
    };
    // The last row needs no padding behind it.
    for (Case const& c : {Case{12, 4}, Case{24, 10}, Case{12, -4}, Case{100, 48}}) {
        Frame const frame = MakeFrame(c.size, pixels.data(), c.stride);
        EXPECT_EQ(FrameCheck("Cannot look at", frame).GetPlane(0, 4, 3), pixels.data()) << c.size << ' ' << c.stride;
    }
}

TEST(FrameCheck, RefusesAPlaneThatIsSmallerThanTheImage) {
    std::vector<std::uint8_t> const pixels(100);
    struct Case {
        std::uint64_t size;
        std::int64_t stride;
    };
    constexpr Case Cases[] = {{11, 4}, {23, 10}, {11, -4}, {100, 3}, {100, -3}, {100, 0}, {100, 49}};
    for (Case const& c : Cases) {
        std::string const message = RefusalOf(MakeFrame(c.size, pixels.data(), c.stride));
        EXPECT_THAT(message, StartsWith("Cannot look at the frame {")) << c.size << ' ' << c.stride;
        EXPECT_THAT(message, EndsWith(": plane 0 is smaller than the image")) << c.size << ' ' << c.stride;
    }
    EXPECT_THAT(RefusalOf(MakeFrame(100, pixels.data(), 4), 1), EndsWith(": plane 1 is smaller than the image"));
}

TEST(FrameCheck, RefusesAFrameWithoutAnImage) {
    EXPECT_THAT(RefusalOf(Frame()), EndsWith(": it has no image"));
    EXPECT_THAT(RefusalOf(MakeFrame(100, nullptr, 4)), EndsWith(": it has no image"));
    EXPECT_THAT(RefusalOf(MakeFrame(0, "x", 4)), EndsWith(": it has no image"));
}

TEST(FrameCheck, SaysThatAFormatIsUnknown) {
    Frame const frame = MakeFrame(12, "0123456789a", 4);
    FrameCheck const check("Cannot look at", frame);
    EXPECT_THAT(test::MessageOf<std::invalid_argument>([&] { check.RefuseFormat(); }),
                EndsWith(": its colour format is unknown"));
}

TEST(FrameCheck, LetsPixelsBeWrittenWhereTheFrameDoes) {
    media::video::FrameBase<void> const frame(ColourFormat::Grey8, 4, 3, {}, {});
    std::uint8_t* const first = FrameCheck("Cannot change", frame).GetPlane(0, 4, 3);
    EXPECT_EQ(first, frame.GetPlane(0).GetBuffer());
}

}  // namespace
}  // namespace qel::plugin
