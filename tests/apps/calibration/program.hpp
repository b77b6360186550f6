#pragma once

#include <string>
#include <vector>

#include "support/process.hpp"

namespace qel::test {

/// Runs the qel program with these arguments and waits for its end.
inline Outcome RunQel(std::vector<std::string> arguments) {
    Command command;
    command.program = QEL_TEST_PROGRAM;
    command.arguments = std::move(arguments);
    return RunProcess(command);
}

}  // namespace qel::test
