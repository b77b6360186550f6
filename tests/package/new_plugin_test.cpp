#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/process.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A shell in a folder of its own that finds the installed program, as a user's does.
class NewPlugin : public testing::Test {
protected:
    NewPlugin() { WriteMovingSquare(folder / "square.mkv", {.frames = 3}); }

    /// Runs commands and returns what they write; both outputs, where they fail.
    std::string Shell(std::string const& commands) const {
        char const* const path = std::getenv("PATH");
        Outcome const outcome = RunProcess({
            .program = "/bin/sh",
            .arguments = {"-ec", commands},
            .environment = {{"PATH", std::string(QEL_TEST_PROGRAMS ":") + (path == nullptr ? "" : path)}},
            .prepare =
                [this] {
                    if (chdir(folder.GetPath().c_str()) != 0) _exit(126);
                },
        });
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.error;
        return outcome.output;
    }

    TemporaryDirectory folder;
};

TEST_F(NewPlugin, IsBuiltAndRunByTheCommandsThatAreTold) {
    EXPECT_THAT(Shell("qel new-plugin hello"), HasSubstr("\n  cd hello\n  cmake -B build\n  cmake --build build\n"));
    Shell("cd hello && cmake -B build && cmake --build build");
    std::string const lines = Shell("cd hello && qel run ../square.mkv --plugins build --quiet");
    EXPECT_THAT(lines, HasSubstr(R"("label":"bright spot"},"x":4,"y":8,"w":8,"h":8,"area":64}]})"));
    EXPECT_THAT(Shell("qel algorithms --plugins hello/build"),
                AllOf(HasSubstr("example.Hello\n  kind: passthrough\n"), HasSubstr("qel.algorithm.video.Motion\n")));
    // One that changes frames takes from the other what it looks for.
    Shell("qel new-plugin darken --in-place && cd darken && cmake -B build && cmake --build build");
    std::string const dark = Shell(
        "qel run square.mkv --plugins hello/build --plugins darken/build --algorithm darken --algorithm hello "
        "--quiet");
    EXPECT_THAT(dark, AllOf(HasSubstr("\"frame\":2,"), Not(HasSubstr("bright spot"))));
}

}  // namespace
}  // namespace qel::test
