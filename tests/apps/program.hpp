#pragma once

#include <string>
#include <vector>

#include "support/process.hpp"

namespace qel::test {

/// The qel program with these arguments, and with the plug-in of the tests as its only one.
Command MakeProgram(std::vector<std::string> arguments);

/// Runs it and waits for its end.
Outcome RunProgram(std::vector<std::string> arguments);

/// The lines of a text, without their ends; a last line that does not end counts too.
std::vector<std::string> SplitLines(std::string const& text);

}  // namespace qel::test
