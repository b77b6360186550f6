#include <algorithm>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// Each folder holds one plug-in with one algorithm: fixture.Counter and fixture.Another.
constexpr char Counter[] = QEL_TEST_MORE_PLUGINS "/counter";
constexpr char Another[] = QEL_TEST_MORE_PLUGINS "/another";

class PluginsOption : public testing::Test {
protected:
    PluginsOption() : video(directory / "video.mkv") { WriteMovingSquare(video, {.frames = 2}); }

    Outcome Run(std::vector<std::string> const& more) const {
        std::vector<std::string> arguments{"run", video, "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    TemporaryDirectory directory;
    std::string video;
};

TEST_F(PluginsOption, AddsAlgorithmsToTheInstalledOnes) {
    Outcome const outcome = RunProgram({"algorithms", "--plugins", Counter, "--plugins", Another});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("fixture.Another\n"), HasSubstr("fixture.Counter\n"),
                                      HasSubstr(std::string(Counter) + "/libqel_algorithm_counter.so\n"),
                                      HasSubstr("test.Threshold\n")));
}

TEST_F(PluginsOption, RunsTheOneAlgorithmThatItBrings) {
    Outcome const outcome = Run({"--plugins", Counter});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 2);
    EXPECT_THAT(outcome.output, HasSubstr(R"("label":"bright"},"x":0,"y":0,"w":64,"h":48,"area":64}]})"));
}

TEST_F(PluginsOption, TakesAFolderRelativeToTheCurrentOne) {
    std::filesystem::path const old = std::filesystem::current_path();
    std::filesystem::current_path(QEL_TEST_MORE_PLUGINS);
    Outcome const outcome = Run({"--plugins", "counter"});
    std::filesystem::current_path(old);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
}

TEST_F(PluginsOption, LeavesTheChoiceToTheAlgorithmOptionWhereItIsGiven) {
    Outcome const outcome = Run({"--plugins", Counter, "--algorithm", "threshold"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.output, HasSubstr(R"("w":8,"h":8,"area":64)"));
    EXPECT_EQ(Run({"--plugins", Counter, "--plugins", Another, "--algorithm", "another"}).exitCode, 0);
}

TEST_F(PluginsOption, AsksWhichAlgorithmIsMeantWhereItBringsSeveral) {
    Outcome const outcome = Run({"--plugins", Counter, "--plugins", Another});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.error,
              "qel: --plugins brings several algorithms: name one or more of fixture.Another, fixture.Counter with "
              "--algorithm\n");
}

TEST_F(PluginsOption, AsksForAnAlgorithmWhereItBringsNothingNew) {
    Outcome const outcome = Run({"--plugins", QEL_TEST_PLUGINS});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.error, "qel: --plugins brings no algorithm of its own: name an installed one with --algorithm\n");
    EXPECT_EQ(Run({"--plugins", QEL_TEST_PLUGINS, "--algorithm", "threshold"}).exitCode, 0);
}

TEST_F(PluginsOption, WarnsOfAPluginThatCannotBeUsed) {
    WriteFile(directory / "libqel_algorithm_broken.so", "no library at all");
    Outcome const outcome = RunProgram({"algorithms", "--plugins", directory.GetPath()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.error,
                testing::StartsWith("qel: warning: " + (directory / "libqel_algorithm_broken.so") + ": "));
    EXPECT_THAT(outcome.output, HasSubstr("test.Threshold\n"));
}

TEST_F(PluginsOption, RefusesAFolderThatIsOfNoUse) {
    std::string const file = directory / "file";
    WriteFile(file, "");
    std::string const empty = directory / "empty";
    std::filesystem::create_directory(empty);
    WriteFile(empty + "/libqel_counter.so", "");
    std::string const circle = directory / "circle";
    std::filesystem::create_symlink("circle", circle);
    struct Case {
        std::string folder;
        char const* why;
    };
    Case const cases[] = {
        {"/nowhere/build", "there is no such folder; name the one that libqel_algorithm_*.so is built into"},
        {"", "there is no such folder; name the one that libqel_algorithm_*.so is built into"},
        {file, "it is not a folder; name the one that libqel_algorithm_*.so is built into"},
        {circle, "Too many levels of symbolic links"},
        {empty, "it holds no libqel_algorithm_*.so; build the plug-in, or name the folder that it is built into"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.folder);
        for (std::vector<std::string> const& arguments :
             {std::vector<std::string>{"algorithms", "--plugins", Counter, "--plugins", c.folder},
              {"run", video, "--plugins", c.folder}}) {
            Outcome const outcome = RunProgram(arguments);
            EXPECT_EQ(outcome.exitCode, 2);
            EXPECT_EQ(outcome.output, "");
            EXPECT_EQ(outcome.error, "qel: no plug-ins can be taken from '" + c.folder + "': " + c.why + "\n");
        }
    }
}

}  // namespace
}  // namespace qel::test
