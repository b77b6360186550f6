#include "program.hpp"

#include <sstream>

namespace qel::test {

Command MakeProgram(std::vector<std::string> arguments) {
    Command command;
    command.program = QEL_TEST_PROGRAM;
    command.arguments = std::move(arguments);
    command.environment["LD_LIBRARY_PATH"] = QEL_TEST_PLUGINS;
    return command;
}

Outcome RunProgram(std::vector<std::string> arguments) { return RunProcess(MakeProgram(std::move(arguments))); }

std::vector<std::string> SplitLines(std::string const& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace qel::test
