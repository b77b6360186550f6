// The program on a camera that fails: each test runs an RTSP server of its own on this machine.
#include <csignal>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"
#include "support/rtsp_camera.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"
#include "watcher.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// What the lines of a run say.
struct Results {
    std::size_t frames = 0;
    std::size_t gaps = 0;
    std::vector<std::pair<int, int>> sizes;

    /// Expects every line to be whole, frames without holes and times that rise.
    explicit Results(std::string const& path) {
        std::string const text = ReadFile(path);
        EXPECT_TRUE(text.empty() || text.back() == '\n');
        std::int64_t last = -1;
        for (std::string const& line : SplitLines(text)) {
            json::value const value = json::parse(line);
            EXPECT_EQ(value.at("frame").to_number<std::size_t>(), frames++);
            auto const time = value.at("timestamp").to_number<std::int64_t>();
            EXPECT_GT(time, last);
            if (auto const* const gap = value.as_object().if_contains("gap")) {
                ++gaps;
                EXPECT_GE(time - last, gap->to_number<std::int64_t>());
            }
            last = time;
            std::pair const size(value.at("resolution").at("width").to_number<int>(),
                                 value.at("resolution").at("height").to_number<int>());
            if (sizes.empty() || sizes.back() != size) sizes.push_back(size);
        }
    }
};

void Interrupt(pid_t process) { kill(process, SIGINT); }

class QelRunOfAStream : public testing::Test {
protected:
    Outcome Run(std::vector<std::string> const& more) {
        std::vector<std::string> arguments{"run", camera.GetUri(), "-a", "threshold", "-o", results};
        arguments.insert(arguments.end(), more.begin(), more.end());
        Command command = MakeProgram(arguments);
        command.watch = [this](pid_t process, std::string const& error) { watcher(process, error); };
        Outcome outcome = RunProcess(command);
        EXPECT_TRUE(watcher.IsDone()) << outcome.error;
        return outcome;
    }

    /// Expects a video of so many frames, all of the camera's first size.
    static void ExpectVideo(std::string const& path, std::size_t count) {
        host::VideoSource source(host::Locate(path), {media::ColourFormat::Grey8});
        std::size_t frames = 0;
        while (auto const frame = source.Read()) {
            ++frames;
            EXPECT_EQ(frame->GetWidth(), 320U);
            EXPECT_EQ(frame->GetHeight(), 240U);
        }
        EXPECT_EQ(frames, count);
    }

    TemporaryDirectory directory;
    std::string results = directory / "results.jsonl";
    std::string annotated = directory / "annotated.mp4";
    RtspCamera camera;
    Watcher watcher;
};

TEST_F(QelRunOfAStream, GoesOnWhenItsServerIsKilledAndComesBackWithAnotherCodec) {
    watcher.When(HasLines(results, 20), [this](pid_t) { camera.Kill(); })
        .When(HasSaid("trying again", 2),
              [this](pid_t) {
                  camera.Start({"--codec", "jpeg", "--transport", "tcp"});
              })
        .When(HasSaid("is back after"), [this](pid_t) { camera.Kill(); })
        .When(HasSaid("trying again", 3), [this](pid_t) { camera.Start(); })
        .When(HasSaid("is back after", 2), Interrupt);
    Outcome const outcome = Run({"--reconnect", "--annotate", annotated});
    EXPECT_EQ(outcome.exitCode, 130) << outcome.error;
    Results const read(results);
    EXPECT_GE(read.frames, 22U);
    EXPECT_EQ(read.gaps, 2U);
    EXPECT_THAT(outcome.error, HasSubstr("qel: warning: '" + camera.GetUri() + "' was lost after frame "));
    EXPECT_THAT(outcome.error, HasSubstr("qel: warning: '" + camera.GetUri() + "' is back after "));
    EXPECT_THAT(outcome.error, HasSubstr("\n  lost: 2 interruptions (0 stalls), back 2 times after "));
    ExpectVideo(annotated, read.frames);
}

TEST_F(QelRunOfAStream, GoesOnWhenItsServerFallsSilent) {
    watcher.When(HasLines(results, 10), [this](pid_t) { camera.Say("stall"); })
        .When(HasSaid("fell silent: no frame for 3.0 s after "), [this](pid_t) { camera.Say("go"); })
        .When(HasSaid("is back after"), Interrupt);
    Outcome const outcome = Run({"--reconnect", "--stall-timeout", "3"});
    EXPECT_EQ(outcome.exitCode, 130) << outcome.error;
    Results const read(results);
    EXPECT_GE(read.frames, 11U);
    EXPECT_GE(read.gaps, 1U);
    EXPECT_THAT(outcome.error, HasSubstr("back " + std::to_string(read.gaps) + " time"));
    EXPECT_THAT(outcome.error, Not(HasSubstr("(0 stalls)")));
}

TEST_F(QelRunOfAStream, FollowsAChangeOfTheResolution) {
    watcher.When(HasLines(results, 10), [this](pid_t) { camera.Say("size 160 200"); })
        .When(HasText(results, R"("width":160)"), [this](pid_t) { camera.Say("size 400 100"); })
        .When(HasText(results, R"("width":400)"), Interrupt);
    Outcome const outcome = Run({"--annotate", annotated, "--snapshot", directory / "sheet.png"});
    EXPECT_EQ(outcome.exitCode, 130) << outcome.error;
    // Frames may be dropped on a machine that is busy.
    EXPECT_THAT(outcome.error, Not(HasSubstr("interruption")));
    Results const read(results);
    EXPECT_THAT(read.sizes, testing::ElementsAre(std::pair(320, 240), std::pair(160, 200), std::pair(400, 100)));
    ExpectVideo(annotated, read.frames);
}

TEST_F(QelRunOfAStream, EndsWithAnErrorAndWholeFilesWhenItsServerIsKilled) {
    for (char const* transport : {"udp", "tcp"}) {
        SCOPED_TRACE(transport);
        camera.Kill();
        camera.Start({"--transport", transport});
        WriteFile(results, "");
        watcher = Watcher().When(HasLines(results, 20), [this](pid_t) { camera.Kill(); });
        Outcome const outcome = Run({"-q", "--annotate", annotated});
        EXPECT_EQ(outcome.exitCode, 1);
        Results const read(results);
        EXPECT_GE(read.frames, 20U);
        EXPECT_THAT(outcome.error, StartsWith("qel: '" + camera.GetUri() + "' was lost after frame " +
                                              std::to_string(read.frames - 1) + ": "));
        EXPECT_EQ(SplitLines(outcome.error).size(), 1U) << outcome.error;
        ExpectVideo(annotated, read.frames);
    }
}

TEST_F(QelRunOfAStream, EndsWithAnErrorWhenItsServerFallsSilent) {
    watcher.When(HasLines(results, 10), [this](pid_t) { camera.Say("stall"); });
    Outcome const outcome = Run({"-q", "--stall-timeout", "4"});
    EXPECT_EQ(outcome.exitCode, 1);
    Results const read(results);
    EXPECT_EQ(outcome.error, "qel: '" + camera.GetUri() + "' fell silent: no frame for 4.0 s after " +
                                 std::to_string(read.frames) + " frames\n");
}

TEST_F(QelRunOfAStream, EndsWithItsStreamUnlessItReconnects) {
    watcher.When(HasLines(results, 10), [this](pid_t) { camera.Say("end"); });
    Outcome outcome = Run({"-q"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_GE(Results(results).frames, 10U);

    WriteFile(results, "");
    watcher = Watcher()
                  .When(HasLines(results, 10), [this](pid_t) { camera.Say("end"); })
                  .When(HasSaid("is back after"), Interrupt);
    outcome = Run({"-q", "--reconnect"});
    EXPECT_EQ(outcome.exitCode, 130) << outcome.error;
    EXPECT_THAT(outcome.error, StartsWith("qel: warning: '" + camera.GetUri() + "' ended; trying again in 0."));
    EXPECT_EQ(Results(results).gaps, 1U);
}

TEST_F(QelRunOfAStream, WaitsForACameraThatIsNotThereYet) {
    camera.Kill();
    watcher.When(HasSaid("trying again"), [this](pid_t) { camera.Start(); });
    Outcome const outcome = Run({"-q", "--reconnect", "-n", "5"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.error, StartsWith("qel: warning: cannot open '" + camera.GetUri() + "': "));
    Results const read(results);
    EXPECT_EQ(read.frames, 5U);
    EXPECT_EQ(read.gaps, 0U);
}

TEST_F(QelRunOfAStream, GivesUpAfterTheAttemptsThatItIsAllowed) {
    camera.Kill();
    WriteFile(results, "precious");
    Outcome const outcome = Run({"-q", "--reconnect=2"});
    EXPECT_EQ(outcome.exitCode, 1);
    auto const lines = SplitLines(outcome.error);
    ASSERT_EQ(lines.size(), 3U) << outcome.error;
    EXPECT_THAT(lines[2], StartsWith("qel: gave up after 2 attempts to reconnect: cannot open '" + camera.GetUri()));
    EXPECT_EQ(ReadFile(results), "precious");
}

TEST_F(QelRunOfAStream, EndsInOrderWhenItIsInterruptedWhileItsServerIsAway) {
    watcher.When(HasLines(results, 10), [this](pid_t) { camera.Kill(); }).When(HasSaid("trying again", 3), Interrupt);
    Outcome const outcome = Run({"--reconnect", "--annotate", annotated});
    EXPECT_EQ(outcome.exitCode, 130);
    Results const read(results);
    EXPECT_THAT(outcome.error, HasSubstr("\n  lost: 1 interruption (0 stalls), back 0 times after 3 attempts, "));
    EXPECT_THAT(outcome.error, testing::EndsWith("qel: interrupted after " + std::to_string(read.frames) +
                                                 " frames; what was written is complete\n"));
    ExpectVideo(annotated, read.frames);
}

TEST_F(QelRunOfAStream, RefusesToReconnectToWhatIsReadOnce) {
    std::string const video = directory / "video.mkv";
    WriteMovingSquare(video, {.frames = 2});
    struct Case {
        std::vector<std::string> arguments;
        std::string error;
    };
    std::string const streams = " is for streams, which may go away and come back; '";
    Case const cases[] = {
        {{video, "--reconnect"}, "--reconnect" + streams + video + "' is a file"},
        {{"file://" + video, "--reconnect=3"}, "--reconnect" + streams + "file://" + video + "' is a file"},
        {{video, "--stall-timeout", "3"}, "--stall-timeout" + streams + video + "' is a file"},
        {{"fd://0", "--reconnect"}, "--reconnect" + streams + "fd://0' is read once"},
        {{"rtsp://a/b", "--reconnect=0"},
         "--reconnect: '0' is no number of attempts: give a whole number from 1 "
         "(see qel --help)"},
        {{"rtsp://a/b", "--reconnect=x"},
         "--reconnect: 'x' is no number of attempts: give a whole number from 1 "
         "(see qel --help)"},
        {{"rtsp://a/b", "--stall-timeout", "nan"}, "--stall-timeout: 'nan' is no number of seconds (see qel --help)"},
        {{"rtsp://a/b", "--stall-timeout", "-1"}, "--stall-timeout: '-1' is no number of seconds (see qel --help)"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.error);
        std::vector<std::string> arguments{"run", "-a", "threshold"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        Outcome const outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, "qel: " + c.error + "\n");
    }
}

}  // namespace
}  // namespace qel::test
