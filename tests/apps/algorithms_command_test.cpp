#include <algorithm>
#include <filesystem>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(QelAlgorithms, ListsWhatIsRegistered) {
    Outcome const outcome = RunProgram({"algorithms"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    std::string const file = std::string(QEL_TEST_PLUGINS) + "/libqel_algorithm_threshold.so\n";
    EXPECT_EQ(outcome.output,
              "test.Fail\n  kind: passthrough\n  colour formats: Rgb24\n  file: " + file +
                  "\ntest.Invert\n  kind: inplace\n  colour formats: Grey8\n  file: " + file +
                  "\ntest.Threshold\n  kind: passthrough\n  colour formats: Grey8, Nv12\n  file: " + file +
                  "  properties:\n"
                  "    threshold = 200  (integer, 1 to 250)\n        Smallest brightness of a pixel that counts\n"
                  "    smallest_area = 1  (integer, 1 to 1000)\n        Fewest pixels of an object\n"
                  "    confidence = 0.5  (number, 0 to 1)\n        Confidence that objects get\n"
                  "    enabled = true  (boolean)\n        Whether objects are looked for\n"
                  "    label = bright  (string, one of bright, moving, other)\n        Label that objects get\n");
}

TEST(QelAlgorithms, ListsThemAsJson) {
    Outcome const outcome = RunProgram({"algorithms", "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    ASSERT_EQ(SplitLines(outcome.output).size(), 1U);
    json::array const list = json::parse(outcome.output).at("algorithms").as_array();
    ASSERT_EQ(list.size(), 3U);
    json::value const& threshold = list[2];
    EXPECT_EQ(threshold.at("type_name"), "test.Threshold");
    EXPECT_EQ(threshold.at("kind"), "passthrough");
    EXPECT_EQ(list[1].at("kind"), "inplace");
    EXPECT_EQ(threshold.at("colour_formats"), json::array({"Grey8", "Nv12"}));
    EXPECT_EQ(std::filesystem::path(threshold.at("file").as_string().c_str()).filename(),
              "libqel_algorithm_threshold.so");
    json::object const& properties = threshold.at("properties").as_object();
    EXPECT_EQ(properties.size(), 5U);
    EXPECT_EQ(properties.at("threshold").at("type"), "integer");
    EXPECT_EQ(properties.at("threshold").at("default").to_number<int>(), 200);
    EXPECT_EQ(properties.at("threshold").at("minimum").to_number<int>(), 1);
    EXPECT_EQ(properties.at("threshold").at("maximum").to_number<int>(), 250);
    EXPECT_EQ(properties.at("label").at("enum"), json::array({"bright", "moving", "other"}));
    EXPECT_EQ(properties.at("smallest_area").at("description"), "Fewest pixels of an object");
    EXPECT_TRUE(list[1].at("properties").as_object().empty());
    // As people write numbers, where the library would write 5E-1.
    EXPECT_NE(outcome.output.find(R"("default":0.5,)"), std::string::npos) << outcome.output;
}

TEST(QelAlgorithms, WarnsOfAPluginThatCannotBeUsedAndListsTheOthers) {
    TemporaryDirectory const directory;
    for (auto const& entry : std::filesystem::directory_iterator(QEL_TEST_PLUGINS)) {
        std::filesystem::copy(entry.path(), directory.GetPath() / entry.path().filename());
    }
    WriteFile(directory / "libqel_algorithm_broken.so", "no library at all");
    Command command = MakeProgram({"algorithms"});
    command.environment["LD_LIBRARY_PATH"] = directory.GetPath().string();
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("test.Threshold\n"));
    std::vector<std::string> const lines = SplitLines(outcome.error);
    ASSERT_EQ(lines.size(), 1U) << outcome.error;
    EXPECT_THAT(lines[0], testing::StartsWith("qel: warning: " + (directory / "libqel_algorithm_broken.so") + ": "));
}

TEST(QelAlgorithms, SaysThatThereAreNone) {
    TemporaryDirectory const directory;
    for (auto const& entry : std::filesystem::directory_iterator(QEL_TEST_PLUGINS)) {
        std::string const name = entry.path().filename();
        if (name.find("threshold") == std::string::npos)
            std::filesystem::copy(entry.path(), directory.GetPath() / name);
    }
    Command command = MakeProgram({"algorithms"});
    command.environment["LD_LIBRARY_PATH"] = directory.GetPath().string();
    Outcome outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    std::string const none =
        "qel: no algorithm is installed: no plug-in libqel_algorithm_*.so lies beside libqel_algorithm.so; --plugins "
        "names a folder of others\n";
    EXPECT_EQ(outcome.error, none);
    command.arguments = {"run", "/nowhere/video.avi"};
    outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.error, none);
}

TEST(QelAlgorithms, SaysThatItsOutputCannotBeWritten) {
    Command command = MakeProgram({"algorithms"});
    command.outputFile = "/dev/full";
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: cannot write the standard output: No space left on device\n");
}

TEST(Qel, TellsItsVersionAndHowItIsUsed) {
    EXPECT_EQ(RunProgram({"--version"}).output, "qel " QEL_TEST_VERSION "\n");
    EXPECT_EQ(RunProgram({"--version"}).exitCode, 0);
    for (std::vector<std::string> const& arguments :
         {std::vector<std::string>{"--help"}, {"run", "--help"}, {"algorithms", "--help"}}) {
        Outcome const outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.error, "");
        EXPECT_THAT(outcome.output, HasSubstr("Usage: qel"));
        EXPECT_THAT(outcome.output, HasSubstr("Example"));
    }
}

TEST(Qel, SaysInOneLineWhatIsWrongWithTheCommand) {
    struct Case {
        std::vector<std::string> arguments;
        char const* text;
    };
    Case const cases[] = {
        {{},
         "qel: a command is missing: run, calibrate, measure, serve, algorithms, info, plugins or new-plugin (see qel "
         "--help)\n"},
        {{"walk"}, "qel: The following argument was not expected: walk (see qel --help)\n"},
        {{"run"}, "qel: VIDEO is required (see qel --help)\n"},
        {{"run", "a.avi", "--speed"}, "qel: The following argument was not expected: --speed (see qel --help)\n"},
        {{"run", "a.avi", "b.avi"}, "qel: The following argument was not expected: b.avi (see qel --help)\n"},
        {{"algorithms", "--yaml"}, "qel: The following argument was not expected: --yaml (see qel --help)\n"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        Outcome const outcome = RunProgram(c.arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, c.text);
        EXPECT_EQ(outcome.output, "");
    }
    for (char const* count : {"0", "-1", "many", "1.5"}) {
        Outcome const outcome = RunProgram({"run", "a.avi", "--max-frames", count});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, std::string("qel: --max-frames: '") + count +
                                     "' is no number of frames: give a whole number from 1 (see qel --help)\n");
    }
}

TEST(Qel, LogsWhatTheEnvironmentAsksForAndSaysWhenItMakesNoSense) {
    Command command = MakeProgram({"algorithms"});
    command.environment["QEL_LOG"] = "debug, qel.some=off";
    EXPECT_EQ(RunProcess(command).exitCode, 0);
    command.environment["QEL_LOG"] = "loudly";
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(SplitLines(outcome.error).size(), 1U) << outcome.error;
    EXPECT_THAT(outcome.error, testing::StartsWith("qel: the environment variable QEL_LOG is wrong: "));
}

}  // namespace
}  // namespace qel::test
