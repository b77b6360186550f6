#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace qel::test {

/// How to run a program.
struct Command {
    std::string program;
    std::vector<std::string> arguments{};
    std::map<std::string, std::string> environment{};
    /// Where the standard output goes instead of into Outcome::output, when not empty.
    std::string outputFile{};
    /// Whether the standard error output is a terminal.
    bool terminal = false;
    /// Called in the new process before the program starts.
    std::function<void()> prepare{};
    /// Called with the process while it runs, and with what it has written to the standard error output so far,
    /// whenever that grows or some milliseconds have passed.
    std::function<void(pid_t, std::string const&)> watch{};
};

/// What became of it.
struct Outcome {
    /// The exit code, or minus the number of the signal that ended the program.
    int exitCode = 0;
    std::string output;
    std::string error;
};

/// Runs a program to its end; throws std::runtime_error when it cannot be run or takes longer than two minutes.
Outcome RunProcess(Command const& command);

}  // namespace qel::test
