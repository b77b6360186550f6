#include "looped_source.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "serve/fake_source.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"

namespace qel::serve {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

std::vector<std::chrono::milliseconds> ReadTimes(LoopedSource& source, int frames) {
    std::vector<std::chrono::milliseconds> times;
    for (int i = 0; i < frames; ++i) {
        auto const time = source.Read().value().GetTimestamp().time_since_epoch();
        times.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(time));
        EXPECT_FALSE(source.GetGap());
    }
    return times;
}

TEST(LoopedSource, BeginsAnewAtTheEndWithTimesThatGoOn) {
    int opened = 0;
    LoopedSource source(
        [&] {
            ++opened;
            return test::MakeFrames(3);
        },
        [] { return false; });
    EXPECT_THAT(ReadTimes(source, 8), ElementsAre(0ms, 40ms, 80ms, 120ms, 160ms, 200ms, 240ms, 280ms));
    EXPECT_EQ(opened, 3);
    EXPECT_FALSE(source.GetExpectedFrames());
    EXPECT_EQ(source.GetFrameRate(), 25);
    EXPECT_EQ(source.GetFrameSize().width, 16U);
}

TEST(LoopedSource, PlaysAFileOverAndOver) {
    qel::test::TemporaryDirectory const directory;
    std::string const path = directory / "video.mkv";
    qel::test::WriteMovingSquare(path, {.frames = 4});
    LoopedSource source(
        [&] {
            return std::make_unique<host::VideoSource>(host::Locate(path), std::vector{media::ColourFormat::Grey8});
        },
        [] { return false; });
    std::vector<int> columns;
    for (int i = 0; i < 10; ++i) {
        auto const frame = source.Read().value();
        auto const* row =
            static_cast<std::uint8_t const*>(frame.GetPlane(0).GetBuffer()) + 10 * frame.GetPlane(0).GetStride();
        columns.push_back(static_cast<int>(std::find(row, row + frame.GetWidth(), 220) - row));
        EXPECT_EQ(frame.GetTimestamp().time_since_epoch(), i * 100ms);
    }
    EXPECT_THAT(columns, ElementsAre(0, 2, 4, 6, 0, 2, 4, 6, 0, 2));
}

TEST(LoopedSource, EndsWhenItIsTold) {
    bool stop = false;
    LoopedSource source([] { return test::MakeFrames(2); }, [&] { return stop; });
    ReadTimes(source, 3);
    stop = true;
    EXPECT_TRUE(source.Read()) << "the frame that is there already";
    EXPECT_FALSE(source.Read());
}

TEST(LoopedSource, DoesNotGoRoundWithoutFrames) {
    int opened = 0;
    LoopedSource source([&] { return test::MakeFrames(++opened < 3 ? 1 : 0); }, [] { return false; });
    ReadTimes(source, 2);
    EXPECT_EQ(qel::test::MessageOf<host::Error>([&] { (void)source.Read(); }),
              "the video holds no frames to begin anew with");
}

TEST(LoopedSource, FailsWithItsVideo) {
    int opened = 0;
    auto const open = [&]() -> std::unique_ptr<host::FrameSource> {
        if (++opened == 2) throw host::Error("it is gone");
        return test::MakeFrames(1);
    };
    LoopedSource source(open, [] { return false; });
    ReadTimes(source, 1);
    EXPECT_EQ(qel::test::MessageOf<host::Error>([&] { (void)source.Read(); }), "it is gone");
}

}  // namespace
}  // namespace qel::serve
