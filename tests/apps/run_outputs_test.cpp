#include <csignal>
#include <filesystem>
#include <string>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "run_fixture.hpp"
#include "video_source.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;
using testing::StartsWith;

using QelRunOutputs = RunTest;

TEST_F(QelRunOutputs, WritesAVideoThatPlaysWithEveryFrame) {
    std::string const file = directory / "annotated.mp4";
    Outcome const outcome = RunProgram(Arguments({"-q", "-o", directory / "o", "--annotate", file}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    host::VideoSource source(host::Locate(file), {media::ColourFormat::Rgb24});
    unsigned int frames = 0;
    while (auto const frame = source.Read()) {
        EXPECT_EQ(frame->GetWidth(), 64U);
        EXPECT_EQ(frame->GetHeight(), 48U);
        EXPECT_EQ(frame->GetTimestamp().time_since_epoch(), std::chrono::milliseconds(100 * frames));
        ++frames;
    }
    EXPECT_EQ(frames, 20U);
}

TEST_F(QelRunOutputs, DrawsAContactSheet) {
    std::string const file = directory / "sheet.png";
    Outcome const outcome = RunProgram(Arguments({"-q", "-o", directory / "o", "--snapshot", file}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    host::VideoSource source(host::Locate(file), {media::ColourFormat::Rgb24});
    auto const sheet = source.Read();
    ASSERT_TRUE(sheet);
    // Three by three cells of 64 x (48 + 22 for the title) and gaps of 4.
    EXPECT_EQ(sheet->GetWidth(), 3 * (64 + 4) + 4U);
    EXPECT_EQ(sheet->GetHeight(), 3 * (48 + 22 + 4) + 4U);
}

TEST_F(QelRunOutputs, SaysThatAnOutputCannotBeWritten) {
    std::string const nowhere = directory / "no/such/folder/file";
    ExpectRefused(Arguments({"-q", "-o", nowhere}), 1, "cannot write '" + nowhere + "': No such file or directory");
    ExpectRefused(Arguments({"-q", "-o", directory / "o", "--snapshot", nowhere + ".png"}), 1,
                  "cannot write '" + nowhere + ".png': No such file or directory");
    Outcome const outcome = RunProgram(Arguments({"-q", "-o", directory / "o", "--annotate", nowhere + ".mp4"}));
    EXPECT_EQ(outcome.exitCode, 1);
    ASSERT_EQ(SplitLines(outcome.error).size(), 1U) << outcome.error;
    EXPECT_THAT(outcome.error, StartsWith("qel: cannot write '" + nowhere + ".mp4': "));
}

TEST_F(QelRunOutputs, SaysThatTheDiskIsFull) {
    std::string const full = "cannot write '/dev/full': No space left on device";
    ExpectRefused(Arguments({"-q", "-o", "/dev/full"}), 1, full);
    ExpectRefused(Arguments({"-q", "-o", directory / "o", "--snapshot", "/dev/full"}), 1, full);
    ExpectRefused(Arguments({"-q", "-o", directory / "o", "--annotate", "/dev/full"}), 1, full);
    Command command = MakeProgram(Arguments({"-q"}));
    command.outputFile = "/dev/full";
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: cannot write the standard output: No space left on device\n");
}

TEST_F(QelRunOutputs, LeavesWholeLinesWhenAFileMayGrowNoFurther) {
    std::string const file = directory / "o";
    Command command = MakeProgram(Arguments({"-q", "-o", file}));
    // A build that measures coverage would say at the end that its own files may not grow either.
    command.environment["GCOV_ERROR_FILE"] = "/dev/null";
    command.prepare = [] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit const limit{1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: cannot write '" + file + "': File too large\n");
    std::string const text = ReadFile(file);
    EXPECT_GT(text.size(), 0U);
    EXPECT_EQ(text.back(), '\n');
    for (std::string const& line : SplitLines(text)) EXPECT_NO_THROW((void)json::parse(line));
}

TEST_F(QelRunOutputs, SaysThatTheReaderOfItsOutputWentAway) {
    MakeLongVideo();
    Command command;
    command.program = "/bin/sh";
    command.arguments = {"-c", "{ \"$0\" run \"$1\" -a threshold -q; echo \"exit $?\" >&2; } | head -n 1",
                         QEL_TEST_PROGRAM, video};
    command.environment["LD_LIBRARY_PATH"] = QEL_TEST_PLUGINS;
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(SplitLines(outcome.output).size(), 1U);
    EXPECT_EQ(outcome.error, "qel: cannot write the standard output: Broken pipe\nexit 1\n");
}

TEST_F(QelRunOutputs, NeverOverwritesTheVideoOrOneOutputWithAnother) {
    std::string const before = ReadFile(video);
    std::string const link = directory / "link";
    std::filesystem::create_symlink(video, link);
    ExpectRefused(Arguments({"-o", video}), 2,
                  "'" + video + "' is the video itself; write the results to another file");
    ExpectRefused(Arguments({"-o", link}), 2, "'" + link + "' is the video itself; write the results to another file");
    ExpectRefused(Arguments({"--annotate", video}), 2,
                  "'" + video + "' is the video itself; write the results to another file");
    std::string const file = directory / "same";
    ExpectRefused(Arguments({"-o", file, "--snapshot", file}), 2, "'" + file + "' is named for two outputs");
    EXPECT_EQ(ReadFile(video), before);
    std::string const again = directory / "./same";
    ExpectRefused(Arguments({"-o", file, "--snapshot", again}), 2, "'" + again + "' is named for two outputs");
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(QelRunOutputs, RefusesNamesThatPromiseAnotherFormat) {
    struct Case {
        char const* option;
        char const* name;
        std::string line;
    };
    std::string const at = "'" + (directory / "");
    Case const cases[] = {
        {"--annotate", "a.avi", "a.avi' does not end in .mp4: --annotate writes MP4; name " + at + "a.mp4'"},
        {"--annotate", "a", "a' does not end in .mp4: --annotate writes MP4; name " + at + "a.mp4'"},
        {"--annotate", "a.mp4.mkv",
         "a.mp4.mkv' does not end in .mp4: --annotate writes MP4; name " + at + "a.mp4.mp4'"},
        {"--snapshot", "a.jpg", "a.jpg' does not end in .png: --snapshot writes PNG; name " + at + "a.png'"},
    };
    WriteFile(directory / "a.avi", "somebody's");
    // What cannot be reached would be told of, had it been opened.
    for (std::string const& source : {video, std::string("rtsp://127.0.0.1:1/gone")}) {
        for (Case const& c : cases) {
            SCOPED_TRACE(source + " " + c.name);
            ExpectRefused({"run", source, "-a", "threshold", "-o", directory / "o", c.option, directory / c.name}, 2,
                          at + c.line);
        }
    }
    EXPECT_EQ(ReadFile(directory / "a.avi"), "somebody's");
    EXPECT_FALSE(std::filesystem::exists(directory / "o"));
}

TEST_F(QelRunOutputs, TakesEndingsInCapitals) {
    for (std::string const name : {"A.MP4", "a.Mp4"}) {
        EXPECT_EQ(
            RunProgram(Arguments({"-q", "-n", "2", "-o", directory / "o", "--annotate", directory / name})).exitCode,
            0);
        EXPECT_EQ(ReadFile(directory / name).substr(4, 4), "ftyp");
    }
    EXPECT_EQ(
        RunProgram(Arguments({"-q", "-n", "2", "-o", directory / "o", "--snapshot", directory / "A.PNG"})).exitCode, 0);
    EXPECT_EQ(ReadFile(directory / "A.PNG").substr(1, 3), "PNG");
}

TEST_F(QelRunOutputs, TakesDevicesOfAnyName) {
    EXPECT_EQ(RunProgram(Arguments({"-q", "-o", directory / "o", "--annotate", "/dev/null"})).exitCode, 0);
}

TEST_F(QelRunOutputs, WritesOnlyResultsToTheStandardOutput) {
    for (char const* option : {"--annotate", "--snapshot"}) {
        ExpectRefused(Arguments({option, "-"}), 2, "only --output can be '-', the standard output; name a file");
    }
}

TEST_F(QelRunOutputs, SaysThatTheFramesAreTooSmallToBeAnnotated) {
    WriteMovingSquare(video, {.width = 14, .height = 48, .frames = 2});
    std::string const file = directory / "small.mp4";
    ExpectRefused(Arguments({"-q", "--annotate", file}), 1,
                  "cannot write '" + file + "': MP4 needs pictures of 16 x 16 pixels or more, these have 14 x 48");
    WriteMovingSquare(video, {.width = 15, .height = 48, .frames = 2});
    EXPECT_EQ(RunProgram(Arguments({"-q", "--annotate", file})).exitCode, 0);
}

}  // namespace
}  // namespace qel::test
