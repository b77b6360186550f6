#include <algorithm>
#include <csignal>
#include <filesystem>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "run_fixture.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;
using testing::HasSubstr;
using testing::StartsWith;

/// What a line says of the square of WriteMovingSquare in frame i of a video of 64 x 48 pixels, ten frames a second.
std::string SquareLine(std::string const& source, unsigned int i) {
    auto const text = [](double value) {
        // Widths of 64 and heights of 48 pixels: the quotients are known.
        std::ostringstream stream;
        stream.precision(17);
        stream << value;
        return stream.str();
    };
    unsigned int const x = 2 * i;
    return R"({"frame":)" + std::to_string(i) + R"(,"timestamp":)" +
           (i == 0 ? std::string("0") : std::to_string(i) + "00000000") + R"(,"source":")" + source +
           R"(","resolution":{"width":64,"height":48},"objects":[{"detection":{"bounding_box":{"x_min":)" +
           text(x / 64.0) + R"(,"y_min":0.16666666666666666,"x_max":)" + text((x + 8) / 64.0) +
           R"(,"y_max":0.3333333333333333},"confidence":0.5,"label":"bright"},"x":)" + std::to_string(x) +
           R"(,"y":8,"w":8,"h":8,"area":64}]})";
}

using QelRun = RunTest;

TEST_F(QelRun, WritesALineOfJsonAFrame) {
    Outcome const outcome = RunProgram(Arguments({"--quiet"}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    std::vector<std::string> const lines = SplitLines(outcome.output);
    ASSERT_EQ(lines.size(), 20U);
    for (unsigned int i = 0; i < 20; ++i) EXPECT_EQ(lines[i], SquareLine(video, i));
    EXPECT_EQ(outcome.output.back(), '\n');
}

TEST_F(QelRun, WritesToAFileAndSumsUpOnTheErrorOutput) {
    std::string const file = directory / "out.jsonl";
    WriteFile(file, std::string(100000, 'x'));
    Outcome const outcome = RunProgram(Arguments({"-o", file}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(SplitLines(ReadFile(file)).size(), 20U);
    std::vector<std::string> const lines = SplitLines(outcome.error);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], StartsWith(video + ": 20 frames, 20 objects, "));
    EXPECT_THAT(lines[0], testing::EndsWith(" frames/s"));
    EXPECT_THAT(lines[1], testing::MatchesRegex("  decode .* s, algorithm .* s \\(.* frames/s\\), write .* s"));
}

TEST_F(QelRun, OpensAUriLikeItsFile) {
    Outcome const outcome = RunProgram({"run", "file://" + video, "-a", "test.Threshold", "-q"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(SplitLines(outcome.output).size(), 20U);
    EXPECT_EQ(SplitLines(outcome.output).at(3), SquareLine("file://" + video, 3));
}

TEST_F(QelRun, StopsAfterTheNumberOfFramesThatIsAskedFor) {
    EXPECT_EQ(SplitLines(RunProgram(Arguments({"-q", "--max-frames", "1"})).output).size(), 1U);
    EXPECT_EQ(SplitLines(RunProgram(Arguments({"-q", "-n", "7"})).output).size(), 7U);
    EXPECT_EQ(SplitLines(RunProgram(Arguments({"-q", "-n", "1000"})).output).size(), 20U);
}

TEST_F(QelRun, SetsPropertiesOfEveryType) {
    auto const objectsOf = [&](std::vector<std::string> more) {
        more.insert(more.end(), {"-q", "-n", "1"});
        Outcome const outcome = RunProgram(Arguments(more));
        EXPECT_EQ(outcome.error, "");
        return json::parse(outcome.output).at("objects").as_array();
    };
    EXPECT_EQ(objectsOf({"--set", "threshold=221"}).size(), 0U);
    EXPECT_EQ(objectsOf({"--set", "threshold=50"}).at(0).at("area").to_number<int>(), 64 * 48);
    EXPECT_EQ(objectsOf({"--set", "smallest_area=65"}).size(), 0U);
    EXPECT_EQ(objectsOf({"--set", "enabled=false"}).size(), 0U);
    json::array const objects = objectsOf({"--set", "label=moving", "-s", "confidence=0.25"});
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0].at("detection").at("label"), "moving");
    EXPECT_EQ(objects[0].at("detection").at("confidence").as_double(), 0.25);
    EXPECT_EQ(objectsOf({"--set", "threshold=221", "--set", "threshold=220"}).size(), 1U);
}

TEST_F(QelRun, ShowsAProgressBarOnATerminalOnly) {
    Command command = MakeProgram(Arguments({"-o", directory / "o"}));
    command.terminal = true;
    Outcome outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.error, HasSubstr("/20 frames"));
    EXPECT_THAT(outcome.error, HasSubstr("frames/s"));
    EXPECT_THAT(outcome.error, HasSubstr("\r\033[K"));
    EXPECT_THAT(outcome.error, HasSubstr("20 frames, 20 objects"));
    command.arguments.push_back("--quiet");
    EXPECT_EQ(RunProcess(command).error, "");
    EXPECT_THAT(RunProgram(Arguments({"-o", directory / "o"})).error, testing::Not(HasSubstr("\r")));
}

TEST_F(QelRun, RunsSeveralAlgorithmsInOrder) {
    auto const linesOf = [&](std::vector<std::string> const& more) {
        std::vector<std::string> arguments{"run", video, "-q"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        Outcome const outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(outcome.exitCode, 0);
        return SplitLines(outcome.output);
    };
    auto const lines = linesOf({"-a", "threshold", "-a", "invert"});
    ASSERT_EQ(lines.size(), 20U);
    for (unsigned int i = 0; i < 20; ++i) EXPECT_EQ(lines[i], SquareLine(video, i));
    // Once it is inverted, all but the square is bright; its edges are blurred by the compression.
    auto const inverted = linesOf({"-a", "invert", "--algorithm", "threshold", "-s", "threshold.threshold=100"});
    ASSERT_EQ(inverted.size(), 20U);
    EXPECT_NEAR(json::parse(inverted[0]).at("objects").as_array().at(0).at("area").to_number<int>(), 64 * 48 - 64, 40);
    ExpectRefused({"run", video, "-a", "threshold", "-a", "fail"}, 2,
                  "no colour format is accepted by all of the algorithms 'Threshold', 'Fail'");
    ExpectRefused({"run", video, "-a", "threshold", "-a", "Threshold"}, 2, "the algorithm 'Threshold' is named twice");
}

TEST_F(QelRun, RefusesWhatItDoesNotKnow) {
    ExpectRefused({"run", video}, 2, "unknown algorithm 'motion' (known: test.Fail, test.Invert, test.Threshold)");
    ExpectRefused({"run", video, "-a", "test"}, 2,
                  "unknown algorithm 'test' (known: test.Fail, test.Invert, test.Threshold)");
    std::string const known = "(known: threshold, smallest_area, confidence, enabled, label)";
    ExpectRefused(Arguments({"--set", "treshold=3"}), 2,
                  "unknown property 'treshold' of 'Threshold'; did you mean 'threshold'? " + known);
    ExpectRefused(Arguments({"--set", "area=3"}), 2,
                  "unknown property 'area' of 'Threshold'; did you mean 'label'? " + known);
    ExpectRefused(Arguments({"--set", "threshold"}), 2, "'threshold' is no setting; write name=value");
    ExpectRefused(Arguments({"--set", "=3"}), 2, "'=3' is no setting; write name=value");
    ExpectRefused({"run", video, "-a", "invert", "--set", "x=1"}, 2,
                  "unknown property 'x': 'Invert' has no properties");
}

TEST_F(QelRun, RefusesValuesThatAPropertyDoesNotTake) {
    struct Case {
        char const* setting;
        char const* line;
    };
    constexpr Case Cases[] = {
        {"threshold=251",
         "cannot set 'threshold' to '251': algorithms.Threshold.threshold: the value 251 is out of the range 1 to 250"},
        {"threshold=0",
         "cannot set 'threshold' to '0': algorithms.Threshold.threshold: the value 0 is out of the range 1 to 250"},
        {"threshold=-1",
         "cannot set 'threshold' to '-1': algorithms.Threshold.threshold: the value -1 is out of the range 1 to 250"},
        {"threshold=99999999999999999999",
         "cannot set 'threshold' to '99999999999999999999': algorithms.Threshold.threshold: the value 1e+20 is out of "
         "the range "
         "1 to 250"},
        {"threshold=12x", "cannot set 'threshold' to '12x': Failed to parse the string into an integer: 12x"},
        {"threshold=", "cannot set 'threshold' to '': Failed to parse the string into an integer: "},
        {"confidence=1.5",
         "cannot set 'confidence' to '1.5': algorithms.Threshold.confidence: the value 1.5 is out of the range 0 to 1"},
        {"confidence=high", "cannot set 'confidence' to 'high': Failed to parse the string into a number: high"},
        {"enabled=maybe", "cannot set 'enabled' to 'maybe': Failed to parse the string into a boolean: maybe"},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.setting);
        ExpectRefused(Arguments({"--set", c.setting}), 2, c.line);
    }
    Outcome const outcome = RunProgram(Arguments({"--set", "label=dark"}));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.error, HasSubstr("is not one of the choices"));
    EXPECT_THAT(outcome.error, HasSubstr("bright"));
}

TEST_F(QelRun, RefusesVideosThatCannotBeReadAndLeavesTheOutputsAlone) {
    std::string const file = directory / "out.jsonl";
    WriteFile(file, "precious");
    auto const refuse = [&](std::string const& name, std::string const& line) {
        ExpectRefused({"run", name, "-a", "threshold", "-o", file}, 1, line);
        EXPECT_EQ(ReadFile(file), "precious");
    };
    std::string const text = directory / "text.avi";
    WriteFile(text, "This is a text that somebody took for a video.");
    refuse("/nowhere/video.avi", "no such file: '/nowhere/video.avi'");
    refuse(directory.GetPath(), "'" + directory.GetPath().string() + "' is a directory, not a video file");
    refuse(text, "'" + text + "' is not a video: its content is of no format known to GStreamer");
}

TEST_F(QelRun, NamesThePluginThatGStreamerLacks) {
    WriteMovingSquare(video, {.frames = 3, .encoder = "videoconvert ! x264enc ! matroskamux"});
    Command command = MakeProgram(Arguments());
    command.environment["GST_PLUGIN_FEATURE_RANK"] =
        "avdec_h264:NONE,openh264dec:NONE,vah264dec:NONE,vaapih264dec:NONE";
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 1);
    ASSERT_EQ(SplitLines(outcome.error).size(), 1U) << outcome.error;
    EXPECT_THAT(outcome.error, StartsWith("qel: cannot decode '" + video + "': GStreamer lacks the plug-in for H.264"));
    EXPECT_THAT(outcome.error, HasSubstr("decoder; install it"));
}

TEST_F(QelRun, WritesWhatACutVideoHoldsBeforeItSaysSo) {
    MakeLongVideo();
    CutFile(video, std::filesystem::file_size(video) / 2);
    std::string const annotated = directory / "a.mp4";
    Outcome const outcome = RunProgram(Arguments({"-q", "--annotate", annotated, "--snapshot", directory / "s.png"}));
    EXPECT_EQ(outcome.exitCode, 1);
    std::vector<std::string> const lines = SplitLines(outcome.output);
    EXPECT_GT(lines.size(), 200U);
    EXPECT_LE(lines.size(), 250U);
    EXPECT_NO_THROW((void)json::parse(lines.back()));
    EXPECT_THAT(outcome.error, StartsWith("qel: '" + video + "' is cut short: "));
    EXPECT_THAT(outcome.error, testing::EndsWith("; " + std::to_string(lines.size()) + " frames were read\n"));
    host::VideoSource source(host::Locate(annotated), {media::ColourFormat::Grey8});
    std::size_t frames = 0;
    while (source.Read()) ++frames;
    EXPECT_EQ(frames, lines.size());
}

TEST_F(QelRun, WarnsOfAVideoThatEndsLongBeforeItsTime) {
    WriteMovingSquare(video, {.width = 256, .height = 96, .frames = 100, .encoder = "videoconvert ! jpegenc ! avimux"});
    std::string bytes = ReadFile(video);
    // The frames from the middle on; the index behind them stays.
    auto const index = bytes.rfind("idx1");
    ASSERT_NE(index, std::string::npos);
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(index / 2),
              bytes.begin() + static_cast<std::ptrdiff_t>(index), '\xAB');
    WriteFile(video, bytes);
    Outcome const outcome = RunProgram(Arguments({"-q"}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_GT(SplitLines(outcome.output).size(), 30U);
    EXPECT_LT(SplitLines(outcome.output).size(), 90U);
    EXPECT_EQ(SplitLines(outcome.error).size(), 1U) << outcome.error;
    EXPECT_THAT(outcome.error, StartsWith("qel: warning: '" + video + "' ends at 0:0"));
    EXPECT_THAT(outcome.error, testing::EndsWith(", but its headers promise 0:10.0: it may be damaged\n"));
    EXPECT_EQ(RunProgram(Arguments({"-q", "-n", "20"})).error, "");
}

/// Runs a script of the shell in which $0 is the program and $1 a video.
Outcome RunInShell(std::string const& script, std::string const& video) {
    Command command;
    command.program = "/bin/sh";
    command.arguments = {"-c", script, QEL_TEST_PROGRAM, video};
    command.environment["LD_LIBRARY_PATH"] = QEL_TEST_PLUGINS;
    return RunProcess(command);
}

TEST_F(QelRun, FailsWhenTheStandardOutputIsClosed) {
    Outcome const outcome = RunInShell("\"$0\" run \"$1\" -a threshold -q >&-", video);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: cannot write the standard output: Bad file descriptor\n");
}

TEST_F(QelRun, ReadsAVideoFromItsStandardInput) {
    Outcome const outcome = RunInShell("cat \"$1\" | \"$0\" run fd://0 -a threshold -q", video);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(SplitLines(outcome.output).size(), 20U);
}

TEST_F(QelRun, RefusesANamedPipeAtOnce) {
    std::string const pipe = directory / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Outcome const outcome = RunProgram({"run", pipe, "-a", "threshold", "-q"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: '" + pipe + "' is a pipe; read it from the standard input: qel run fd://0 < PIPE\n");
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QelRun, TellsWhatAnAlgorithmFailedOfAndKeepsWhatCameBefore) {
    Outcome const outcome = RunProgram({"run", video, "-a", "fail", "-q"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: the algorithm 'Fail' failed: three is too many\n");
    EXPECT_EQ(SplitLines(outcome.output).size(), 2U);
}

TEST_F(QelRun, StartsItsAlgorithmsAnewWhenTheSizeChanges) {
    std::string bytes;
    std::string const part = directory / "part.ogg";
    for (unsigned int const width : {64U, 128U, 64U}) {
        WriteMovingSquare(part, {.width = width, .frames = 2, .encoder = "videoconvert ! theoraenc ! oggmux"});
        bytes += ReadFile(part);
    }
    WriteFile(video, bytes);
    // It would fail on its third frame otherwise.
    Outcome const outcome = RunProgram({"run", video, "-a", "fail", "-q"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(SplitLines(outcome.output).size(), 6U);
}

TEST_F(QelRun, ClosesItsFilesWhenItIsInterrupted) {
    WriteMovingSquare(video, {.width = 1280, .height = 480, .frames = 600});
    struct Case {
        int signal;
        int exitCode;
    };
    for (Case const& c : {Case{SIGINT, 130}, Case{SIGTERM, 143}}) {
        std::string const results = directory / "results.jsonl";
        std::string const annotated = directory / "annotated.mp4";
        std::filesystem::remove(results);
        Command command =
            MakeProgram(Arguments({"-o", results, "--annotate", annotated, "--snapshot", directory / "s.png"}));
        bool sent = false;
        command.watch = [&](pid_t process, std::string const&) {
            std::error_code ignored;
            auto const size = std::filesystem::file_size(results, ignored);
            if (sent || ignored || size == 0) return;
            sent = kill(process, c.signal) == 0;
        };
        Outcome const outcome = RunProcess(command);
        EXPECT_TRUE(sent);
        EXPECT_EQ(outcome.exitCode, c.exitCode);
        std::vector<std::string> const lines = SplitLines(ReadFile(results));
        EXPECT_GT(lines.size(), 0U);
        EXPECT_LT(lines.size(), 600U);
        for (std::string const& line : lines) EXPECT_NO_THROW((void)json::parse(line));
        EXPECT_THAT(outcome.error, HasSubstr("qel: interrupted after " + std::to_string(lines.size()) +
                                             " of 600 frames; what was written is complete\n"));
        host::VideoSource source(host::Locate(annotated), {media::ColourFormat::Grey8});
        std::size_t frames = 0;
        while (source.Read()) ++frames;
        EXPECT_EQ(frames, lines.size());
        EXPECT_GT(std::filesystem::file_size(directory / "s.png"), 0U);
    }
}

}  // namespace
}  // namespace qel::test
