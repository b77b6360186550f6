// The program is killed at many moments; what it has written by then must be of use.
#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "program.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"
#include "watcher.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;

/// How many frames of a video play, which may be cut short; all of them must be in their places.
std::size_t CountPlayable(std::string const& path) {
    std::size_t frames = 0;
    try {
        host::VideoSource source(host::Locate(path), {media::ColourFormat::Grey8});
        while (auto const frame = source.Read()) {
            EXPECT_EQ(frame->GetTimestamp().time_since_epoch(), std::chrono::milliseconds(100 * frames));
            ++frames;
        }
    } catch (host::Error const&) {
        // The end of the file is missing, or all of it but the first bytes.
    }
    return frames;
}

TEST(QelKilled, LeavesWholeLinesAndAVideoThatPlays) {
    TemporaryDirectory const directory;
    std::string const video = directory / "video.mkv";
    std::string const results = directory / "results.jsonl";
    std::string const annotated = directory / "annotated.mp4";
    WriteMovingSquare(video, {.width = 640, .height = 480, .frames = 300});
    bool anyPlayed = false;
    for (std::size_t const moment : {1U, 5U, 20U, 60U, 90U, 120U, 160U, 200U, 250U}) {
        SCOPED_TRACE(moment);
        Command command = MakeProgram({"run", video, "-a", "threshold", "-q", "-o", results, "--annotate", annotated});
        WriteFile(results, "");
        Watcher watcher;
        watcher.When(HasLines(results, moment), [](pid_t process) { kill(process, SIGKILL); });
        command.watch = [&](pid_t process, std::string const& error) { watcher(process, error); };
        Outcome const outcome = RunProcess(command);
        EXPECT_TRUE(outcome.exitCode == -SIGKILL || outcome.exitCode == 0) << outcome.error;
        std::vector<std::string> lines = SplitLines(ReadFile(results));
        if (ReadFile(results).back() != '\n') lines.pop_back();
        ASSERT_GE(lines.size(), moment);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_EQ(json::parse(lines[i]).at("frame").to_number<std::size_t>(), i);
        }
        // Frames on their way to the encoder and in it, and those of the fragment that was not full.
        constexpr std::size_t OnTheirWay = 100;
        std::size_t const playable = CountPlayable(annotated);
        EXPECT_GE(playable + OnTheirWay, lines.size());
        anyPlayed = anyPlayed || playable > 0;
    }
    EXPECT_TRUE(anyPlayed);
}

}  // namespace
}  // namespace qel::test
