#include "video_writer.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "container_check.hpp"
#include "error.hpp"
#include "support/temporary_directory.hpp"
#include "video_source.hpp"

namespace qel::host {
namespace {

using namespace std::chrono_literals;
using Time = std::chrono::nanoseconds;

Picture GreyPicture(std::uint32_t level) {
    Picture picture({64, 48});
    std::fill(picture.pixels.begin(), picture.pixels.end(), level * 0x010101U);
    return picture;
}

struct Shown {
    std::vector<Time> times;
    std::vector<int> levels;
    bool whole = true;
};

/// The frames of a file that may be cut.
Shown Play(std::string const& path) {
    Shown shown;
    try {
        VideoSource source(Locate(path), {media::ColourFormat::Rgb24});
        while (auto const frame = source.Read()) {
            shown.times.push_back(frame->GetTimestamp().time_since_epoch());
            shown.levels.push_back(*static_cast<std::uint8_t const*>(frame->GetPlane(0).GetBuffer()));
        }
    } catch (Error const&) {
        shown.whole = false;
    }
    return shown;
}

TEST(VideoWriter, KeepsTheTimesOfFramesOverGapsOfAnyLength) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "a.mp4";
    std::vector<Time> const times{7s,     7040ms, 7080ms, 7081ms,    9500ms, 9540ms,
                                  9600ms, 3600s,  3601s,  3601200ms, 3620s,  3620040ms};
    VideoWriter writer(path, {64, 48}, 25);
    for (std::size_t i = 0; i < times.size(); ++i)
        writer.Write(GreyPicture(20 + 18 * static_cast<unsigned>(i)), times[i]);
    writer.Finish();
    Shown const shown = Play(path);
    EXPECT_TRUE(shown.whole);
    ASSERT_EQ(shown.times.size(), times.size());
    for (std::size_t i = 0; i < times.size(); ++i) {
        SCOPED_TRACE(i);
        // The container counts in parts of a second that are no nanoseconds.
        EXPECT_NEAR(double((shown.times[i] - (times[i] - times[0])).count()), 0, 1e6);
        EXPECT_NEAR(shown.levels[i], 20 + 18 * static_cast<int>(i), 6);
    }
}

TEST(VideoWriter, LeavesAFileThatPlaysUpToItsLastFragmentWhereverItIsCut) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "a.mp4";
    {
        VideoWriter writer(path, {64, 48}, 10);
        for (unsigned int i = 0; i < 100; ++i) writer.Write(GreyPicture(2 * i), i * 100ms);
        writer.Finish();
    }
    ASSERT_EQ(Play(path).times.size(), 100U);
    std::string const whole = test::ReadFile(path);
    std::size_t const fragments = whole.find("moof");
    ASSERT_NE(fragments, std::string::npos);
    std::size_t last = 0;
    for (std::size_t part = 1; part <= 20; ++part) {
        std::size_t const size = fragments + (whole.size() - fragments) * part / 20;
        test::WriteFile(path, std::string_view(whole).substr(0, size));
        Shown const shown = Play(path);
        SCOPED_TRACE(size);
        EXPECT_GE(shown.times.size(), last);
        last = shown.times.size();
        for (std::size_t i = 0; i < last; ++i) EXPECT_EQ(shown.times[i], i * 100ms);
    }
    EXPECT_EQ(last, 100U);
    test::WriteFile(path, std::string_view(whole).substr(0, whole.size() / 2));
    EXPECT_GE(Play(path).times.size(), 30U);
}

}  // namespace
}  // namespace qel::host
