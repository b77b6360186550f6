#pragma once

#include <string_view>

#include "qel/logging/level.hpp"

namespace qel::logging {

/// Writes a line to the standard error output: time in UTC, level, name and text. Any thread.
void WriteToConsole(Level level, std::string_view name, std::string_view text);

}  // namespace qel::logging
