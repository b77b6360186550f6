#include <algorithm>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"
#include "support/model_folder.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr char Coloured[] =
    "coloured\n  typename: qel.algorithm.type.ColourClassifier\n  version: 2.1\n  model_status: loaded\n"
    "  colours: blue #0000ff, red #ff0010\n";

std::string Followed(std::string const& version, std::string const& status) {
    return "followed\n  typename: qel.algorithm.type.ObjectClassifier\n  version: " + version +
           "\n  model_status: " + status + "\n  classes: car, person\n";
}

/// With algorithms that publish, one of which follows the model "shapes".
class QelInfo : public testing::Test {
protected:
    Command Make(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"info", "--models", models.GetRoot().string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        Command command = MakeProgram(arguments);
        command.environment["LD_LIBRARY_PATH"] = QEL_TEST_PUBLISHERS;
        command.environment["QEL_LOG"] = "off";
        return command;
    }

    ModelFolder models;
    TemporaryDirectory directory;
    std::string const warning = "qel: warning: " + std::string(QEL_TEST_PUBLISHERS) +
                                "/libqel_algorithm_publishing.so: test.Mute: cannot publish its descriptor: "
                                "it has no words\n";
};

TEST_F(QelInfo, ListsEveryDescriptorAndWarnsOfAnAlgorithmThatCannotPublish) {
    Outcome const outcome = RunProcess(Make());
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, std::string(Coloured) + "\n" + Followed("-", "unloaded"));
    EXPECT_EQ(outcome.error, warning);
}

TEST_F(QelInfo, TellsOfAModelThatIsLoadedAndOfOneThatIsBroken) {
    models.Write("shapes", MeanClassifier{}, R"({"max_batch_size": 1, "version": "7.5"})");
    EXPECT_THAT(RunProcess(Make()).output, EndsWith(Followed("7.5", "loaded")));
    models.Write("shapes", "model.onnx", "no network");
    EXPECT_THAT(RunProcess(Make()).output, EndsWith(Followed("7.5", "failed")));
}

TEST_F(QelInfo, WarnsOfMetadataThatCannotBeReadAndListsTheOthers) {
    models.Write("shapes", "metadata.json", "{");
    Outcome const outcome = RunProcess(Make());
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, Coloured);
    EXPECT_THAT(outcome.error,
                HasSubstr("libqel_algorithm_publishing.so: test.Followed: cannot publish its descriptor: "));
    EXPECT_THAT(outcome.error, HasSubstr(warning));
}

TEST_F(QelInfo, ListsThemAsJson) {
    Outcome const outcome = RunProcess(Make({"--json"}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(SplitLines(outcome.output).size(), 1U);
    EXPECT_EQ(json::parse(outcome.output), json::parse(R"({
        "coloured": {"typename": "qel.algorithm.type.ColourClassifier", "version": "2.1", "model_status": "loaded",
                     "colours": {"red": {"r": 255, "g": 0, "b": 16}, "blue": {"r": 0, "g": 0, "b": 255}}},
        "followed": {"typename": "qel.algorithm.type.ObjectClassifier", "version": "", "model_status": "unloaded",
                     "classes": ["car", "person"]}})"));
}

/// Runs "info --watch" into a file, does one thing after the other, each when the line that ends in its text is there,
/// and interrupts it in the end. Returns the lines.
struct Step {
    std::string awaited;
    std::function<void()> act;
};
std::vector<std::string> Watch(Command command, std::string const& file, std::vector<Step> const& steps) {
    command.outputFile = file;
    std::size_t done = 0, seen = 0;
    command.watch = [&](pid_t child, std::string const&) {
        if (done == steps.size()) return;
        std::string const text = ReadFile(file);
        std::size_t const found = text.find(steps[done].awaited, seen);
        if (found == std::string::npos) return;
        seen = found + steps[done].awaited.size();
        steps[done].act();
        if (++done == steps.size()) kill(child, SIGINT);
    };
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(done, steps.size());
    return SplitLines(ReadFile(file));
}

TEST_F(QelInfo, FollowsAModelThatAppearsBreaksReturnsAndGoes) {
    auto const write = [this] { models.Write("shapes", MeanClassifier{}); };
    auto const breakIt = [this] { models.Write("shapes", "model.onnx", "no network"); };
    auto const remove = [this] { models.Remove("shapes"); };
    std::vector<std::string> const lines = Watch(Make({"--watch"}), directory / "out",
                                                 {{"classes: car, person\n", write},
                                                  {"followed.model_status: loaded\n", breakIt},
                                                  {"followed.model_status: failed\n", write},
                                                  {"followed.model_status: loaded\n", remove},
                                                  {"followed.model_status: unloaded\n", [] {}}});
    std::string const start = std::string(Coloured) + "\n" + Followed("-", "unloaded");
    std::size_t const startLines = SplitLines(start).size();
    ASSERT_GT(lines.size(), startLines);
    for (std::size_t i = 0; i < startLines; ++i) EXPECT_EQ(lines[i], SplitLines(start)[i]);
    std::string last = "unloaded";
    for (std::size_t i = startLines; i < lines.size(); ++i) {
        EXPECT_THAT(lines[i], testing::MatchesRegex("20..-..-..T..:..:..\\....Z followed\\.model_status: "
                                                    "(building|loading|loaded|failed|unloaded)"));
        std::string const status = lines[i].substr(lines[i].rfind(' ') + 1);
        EXPECT_NE(status, last) << "each change once";
        last = status;
    }
}

TEST_F(QelInfo, FollowsChangesAsLinesOfJson) {
    std::vector<std::string> const lines =
        Watch(Make({"--watch", "--json"}), directory / "out",
              {{"\"person\"]}}\n", [this] { models.Write("shapes", MeanClassifier{}); }},
               {"\"value\":\"loaded\"}\n", [] {}}});
    ASSERT_GE(lines.size(), 2U);
    EXPECT_TRUE(json::parse(lines[0]).as_object().contains("followed"));
    for (std::size_t i = 1; i < lines.size(); ++i) {
        json::object const change = json::parse(lines[i]).as_object();
        EXPECT_EQ(change.size(), 3U);
        EXPECT_EQ(change.at("path"), "followed.model_status");
        EXPECT_EQ(change.at("time").as_string().size(), 24U);
    }
    EXPECT_EQ(json::parse(lines.back()).at("value"), "loaded");
}

TEST_F(QelInfo, EndsQuietlyWhenNobodyReadsAnyMore) {
    for (std::string const option : {"--json", "--watch"}) {
        Command command = Make();
        command.program = "/bin/sh";
        // The reader is gone before anything is written, or while nothing is.
        command.arguments = {"-c",
                             "{ sleep 0.3; \"$0\" info --models \"$1\" " + option +
                                 " 2> /dev/null; echo \"exit $?\" >&2; } | " +
                                 (option == "--watch" ? "head -n 1" : ":"),
                             QEL_TEST_PROGRAM, models.GetRoot().string()};
        Outcome const outcome = RunProcess(command);
        EXPECT_EQ(outcome.error, "exit 0\n") << option;
    }
    Command command = Make();
    command.outputFile = "/dev/full";
    Outcome const outcome = RunProcess(command);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, warning + "qel: cannot write the standard output: No space left on device\n");
}

TEST_F(QelInfo, RefusesModelsThatAreNoFolder) {
    std::string const missing = directory / "missing";
    for (std::vector<std::string> const& arguments :
         {std::vector<std::string>{"info", "--models", missing}, {"algorithms", "--models", missing}}) {
        Outcome const outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, "qel: '" + missing + "' is no folder of models\n");
    }
}

TEST(QelInfoWithoutDescriptors, SaysSo) {
    Outcome const outcome = RunProgram({"info"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.error, "qel: no algorithm publishes a descriptor\n");
    EXPECT_EQ(RunProgram({"info", "--json"}).output, "{}\n");
}

}  // namespace
}  // namespace qel::test
