#include "motion.hpp"

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "moving_box.hpp"
#include "qel/algorithm/bit_mask/fill_rectangle.hpp"
#include "qel/algorithm/video/result.hpp"

namespace qel::motion {
namespace {

using algorithm::video::Result;
using media::ColourFormat;

/// The algorithm after it has seen enough of the background.
class MotionTest : public testing::Test {
protected:
    MotionTest() {
        motion_.ChangeSettings([](Settings& settings) { settings.minimumArea = 20; });
        for (int i = 0; i < 30; ++i) Process(film_.Empty());
    }

    Result Process(media::video::FrameBase<void const> const& frame) {
        Result result;
        motion_.Process(frame, result);
        return result;
    }

    MovingBox film_;
    Motion motion_;
};

TEST_F(MotionTest, ReportsOneObjectABlobWithBoxAreaLabelAndConfidence) {
    Result const result = Process(film_.Show(20, 10, 12, 9));
    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(result.objects[0].box, (geometry::Rectangle<unsigned int>{20, 10, 32, 19}));
    EXPECT_EQ(result.objects[0].area, 12U * 9U);
    EXPECT_EQ(result.objects[0].label, "motion");
    EXPECT_EQ(result.objects[0].confidence, 1.0F);
    EXPECT_TRUE(result.objects[0].attributes.empty());
}

TEST_F(MotionTest, IsLessSureOfWhatDiffersLess) {
    // With these, what is 20 levels off is foreground, and what is 40 levels off is strong.
    motion_.ChangeSettings([](Settings& settings) {
        settings.model.threshold = 5;
        settings.model.noise = 4;
    });
    for (int i = 0; i < 100; ++i) Process(film_.Empty());
    Result const faint = Process(film_.Show(20, 10, 12, 9, 110));
    ASSERT_EQ(faint.objects.size(), 1U);
    EXPECT_EQ(faint.objects[0].confidence, 0.0F);
}

TEST_F(MotionTest, GivesTheForegroundTheObjectsWereFoundIn) {
    Result const result = Process(film_.Show(32, 10, 32, 9));
    EXPECT_EQ(result.foreground.GetSize(), (geometry::Dimension<unsigned int, 2>{96, 64}));
    for (std::size_t y = 0; y < 64; ++y) {
        EXPECT_EQ(result.foreground.GetData()[3 * y], 0U);
        EXPECT_EQ(result.foreground.GetData()[3 * y + 1], y >= 10 && y < 19 ? ~0U : 0U);
        EXPECT_EQ(result.foreground.GetData()[3 * y + 2], 0U);
    }
}

TEST_F(MotionTest, AddsToWhatEarlierAlgorithmsFound) {
    Result result;
    result.objects.push_back({{1, 2, 3, 4}, 5, "earlier", 0.5F, {}});
    result.foreground.Resize({96, 64});
    algorithm::bit_mask::FillRectangle(result.foreground, {0, 0, 2, 2}, 1);
    motion_.Process(film_.Show(20, 10, 12, 9), result);
    ASSERT_EQ(result.objects.size(), 2U);
    EXPECT_EQ(result.objects[0].label, "earlier");
    EXPECT_EQ(result.objects[1].label, "motion");
    EXPECT_EQ(result.foreground.GetData()[0], 0xc0000000U);
    EXPECT_EQ(result.foreground.GetData()[30], 0x00000fffU) << "row 10, columns 20 to 31";
}

TEST_F(MotionTest, LeavesOutBlobsBelowTheMinimumArea) {
    EXPECT_EQ(Process(film_.Show(20, 10, 5, 4)).objects.size(), 1U);
    motion_.ChangeSettings([](Settings& settings) { settings.minimumArea = 21; });
    EXPECT_EQ(Process(film_.Show(40, 10, 5, 4)).objects.size(), 0U);
}

TEST_F(MotionTest, OpeningTakesThinThingsAwayAndClosingJoinsWhatIsClose) {
    EXPECT_EQ(Process(film_.Show(20, 10, 2, 30)).objects.size(), 0U);
    motion_.ChangeSettings([](Settings& settings) { settings.opening = 0; });
    EXPECT_EQ(Process(film_.Show(30, 10, 2, 30)).objects.size(), 1U);
    motion_.ChangeSettings([](Settings& settings) { settings.closing = 1; });
    Result const result = Process(film_.Show(40, 10, 2, 30));
    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(result.objects[0].box, (geometry::Rectangle<unsigned int>{40, 10, 42, 40}));
}

TEST_F(MotionTest, ResetTakesTheNextFrameForTheBackground) {
    motion_.Reset();
    EXPECT_EQ(Process(film_.Show(20, 10, 12, 9)).objects.size(), 0U);
}

TEST_F(MotionTest, RefusesAFrameWithoutAnImageAndAddsNothing) {
    Result result;
    EXPECT_THROW(motion_.Process({}, result), std::invalid_argument);
    EXPECT_TRUE(result.objects.empty());
}

TEST(Motion, AcceptsEveryColourFormatNv12First) {
    EXPECT_EQ(Motion().GetSupportedColourFormats(),
              (std::vector{ColourFormat::Nv12, ColourFormat::Grey8, ColourFormat::Yuv24, ColourFormat::Rgb24,
                           ColourFormat::Bgr24}));
    EXPECT_EQ(Motion().GetTypeNameId(), hash::MurmurThree32("qel.algorithm.video.Motion"));
    EXPECT_TRUE(Motion().Is<algorithm::video::passthrough::Algorithm>());
}

TEST(Motion, FindsTheSameObjectInEveryColourFormat) {
    for (int format = 0; format <= 4; ++format) {
        SCOPED_TRACE(format);
        Motion motion;
        motion.ChangeSettings([](Settings& settings) { settings.minimumArea = 20; });
        for (int i = 0; i < 31; ++i) {
            media::video::FrameBase<void> frame(ColourFormat(format), 96, 64, {}, {});
            for (auto const& plane : frame.GetPlanes()) {
                if (plane) std::fill_n(static_cast<std::uint8_t*>(plane.GetBuffer()), plane.GetSize(), 128);
            }
            int const bytes = format >= 1 && format <= 3 ? 3 : 1;
            for (int y = 10; i == 30 && y < 20; ++y) {
                auto* const row =
                    static_cast<std::uint8_t*>(frame.GetPlane(0).GetBuffer()) + y * frame.GetPlane(0).GetStride();
                std::fill_n(row + 40 * bytes, 16 * bytes, 250);
            }
            Result result;
            motion.Process(
                {{media::video::frame::PlaneBase<void const>(frame.GetPlane(0).GetSize(), frame.GetPlane(0).GetBuffer(),
                                                             frame.GetPlane(0).GetStride()),
                  {frame.GetPlane(1).GetSize(), frame.GetPlane(1).GetBuffer(), frame.GetPlane(1).GetStride()}},
                 frame.GetColourFormat(),
                 frame.GetSize(),
                 {},
                 {},
                 {},
                 {}},
                result);
            ASSERT_EQ(result.objects.size(), i == 30 ? 1U : 0U);
            if (i == 30) {
                EXPECT_EQ(result.objects[0].box, (geometry::Rectangle<unsigned int>{40, 10, 56, 20}));
            }
        }
    }
}

}  // namespace
}  // namespace qel::motion
