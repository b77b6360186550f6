#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "program.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {
namespace {

namespace files = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

class QelNewPlugin : public testing::Test {
protected:
    Outcome Run(std::vector<std::string> arguments) const { return RunIn(directory.GetPath(), std::move(arguments)); }

    static Outcome RunIn(std::string const& folder, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "new-plugin");
        Command command = MakeProgram(std::move(arguments));
        command.prepare = [folder] {
            if (chdir(folder.c_str()) != 0) _exit(126);
        };
        return RunProcess(command);
    }

    void ExpectRefused(std::vector<std::string> const& arguments, std::string const& line) const {
        Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, "qel: " + line + "\n");
        EXPECT_EQ(outcome.output, "");
    }

    TemporaryDirectory directory;
};

TEST_F(QelNewPlugin, WritesAProjectAndSaysWhatToDoNext) {
    Outcome const outcome = Run({"hello"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    // The libraries of the tests have no headers beside them.
    EXPECT_EQ(
        outcome.output,
        "hello/CMakeLists.txt\nhello/README.md\nhello/hello.cpp\n\n"
        "Next:\n  cd hello\n"
        "  cmake -B build -DCMAKE_PREFIX_PATH=FOLDER   # where qel is installed with its headers: none are beside " +
            files::weakly_canonical(QEL_TEST_PLUGINS).string() +
            "\n"
            "  cmake --build build\n"
            "  qel run VIDEO --plugins build --annotate hello.mp4\n"
            "then make it yours: hello/hello.cpp\n");
    EXPECT_THAT(ReadFile(directory / "hello/hello.cpp"), HasSubstr("\"example.Hello\""));
    EXPECT_THAT(ReadFile(directory / "hello/CMakeLists.txt"), HasSubstr("project(hello "));
}

TEST_F(QelNewPlugin, WritesOneThatChangesFramesWhenAsked) {
    Outcome const outcome = Run({"hello", "--in-place"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("--algorithm motion --algorithm hello --annotate hello.mp4\n"));
    EXPECT_THAT(ReadFile(directory / "hello/hello.cpp"), HasSubstr("video::inplace::Algorithm"));
}

TEST_F(QelNewPlugin, LeavesWhatExistsAlone) {
    files::create_directory(directory / "hello");
    WriteFile(directory / "hello/notes", "mine");
    ExpectRefused({"hello"}, "'hello' exists already: choose another name, or go to another folder");
    EXPECT_EQ(std::distance(files::directory_iterator(directory / "hello"), files::directory_iterator()), 1);
    WriteFile(directory / "file", "mine");
    ExpectRefused({"file"}, "'file' exists already: choose another name, or go to another folder");
    EXPECT_EQ(ReadFile(directory / "file"), "mine");
}

TEST_F(QelNewPlugin, RefusesNamesThatCannotBeOrAreTaken) {
    ExpectRefused({"Hello"},
                  "'Hello' cannot be the name of a plug-in: it must start with a lower-case letter and hold lower-case "
                  "letters, digits and single underscores between them, such as find_faces");
    ExpectRefused({"fail"}, "the name 'fail' is taken by the installed algorithm test.Fail: choose another");
    ExpectRefused({}, "NAME is required (see qel --help)");
    EXPECT_TRUE(files::is_empty(directory.GetPath()));
}

TEST_F(QelNewPlugin, SaysThatItCannotWrite) {
    Outcome const outcome = RunIn("/proc", {"hello"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, StartsWith("qel: cannot make the folder 'hello': "));
}

}  // namespace
}  // namespace qel::test
