// A short "qel run" whose calls of operator new are failed one after the other: it ends with an exit code and a reason,
// or as usual, never by a signal. A few points only, spread over the run; QEL_OOM_EVERY=1 in the environment tries all.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/process.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::test {
namespace {

struct Case {
    char const* name;
    std::vector<std::string> arguments;
};

class ProgramOutOfMemory : public testing::TestWithParam<Case> {
protected:
    ProgramOutOfMemory() { WriteMovingSquare(video, {.frames = 4}); }

    Outcome Run(unsigned long failing, char const* mode) const {
        Command command;
        command.program = QEL_TEST_PROGRAM;
        command.arguments = GetParam().arguments;
        for (std::string& argument : command.arguments) {
            if (argument == "VIDEO") argument = video;
        }
        command.environment["LD_PRELOAD"] = QEL_TEST_PRELOAD;
        command.environment["QEL_OOM_FAIL"] = std::to_string(failing);
        command.environment["QEL_OOM_MODE"] = mode;
        command.environment["QEL_OOM_COUNT"] = folder / "count";
        return RunProcess(command);
    }

    static unsigned long GetStep(unsigned long count) {
        char const* const every = std::getenv("QEL_OOM_EVERY");
        return every != nullptr ? std::max(1UL, std::strtoul(every, nullptr, 10)) : count / 15 + 1;
    }

    TemporaryDirectory folder;
    std::string video = folder / "video.mkv";
};

TEST_P(ProgramOutOfMemory, EndsWithAReason) {
    Outcome const usual = Run(0, "once");
    ASSERT_EQ(usual.exitCode, 0) << usual.error;
    unsigned long const count = std::stoul(ReadFile(folder / "count"));
    ASSERT_GT(count, 100UL);
    unsigned long points = 0, plugins = 0;
    for (char const* mode : {"once", "for good"}) {
        for (unsigned long failing = 1; failing <= count; failing += GetStep(count), ++points) {
            SCOPED_TRACE("call " + std::to_string(failing) + " of " + std::to_string(count) + " fails " + mode);
            Outcome const outcome = Run(failing, mode);
            // An exception cannot leave the static initialisers of a plug-in; the file is named then.
            bool const isPlugin = outcome.error.find("a static initialiser of this plug-in") != std::string::npos;
            if (outcome.exitCode == -6 && isPlugin) {
                ++plugins;
                continue;
            }
            if (outcome.exitCode == 0) {
                EXPECT_EQ(outcome.output, usual.output);
            } else {
                EXPECT_TRUE(outcome.exitCode == 1 || outcome.exitCode == 2) << outcome.exitCode << outcome.error;
                EXPECT_NE(outcome.error.find("qel: "), std::string::npos) << outcome.error;
            }
        }
    }
    std::cout << "points " << points / 2 << ' ' << points / 2 << " program/" << GetParam().name << std::endl;
    std::cout << "in a plug-in's static initialisers, which end the process and name the file: " << plugins
              << std::endl;
}

INSTANTIATE_TEST_SUITE_P(All, ProgramOutOfMemory,
                         testing::Values(Case{"Run", {"run", "VIDEO", "--max-frames", "2", "--quiet"}},
                                         Case{"Algorithms", {"algorithms"}}),
                         [](auto const& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace qel::test
