#pragma once

#include <string_view>

#include "qel/logging/export.hpp"

namespace qel::logging {

/// Sets the thresholds of all loggers, present and future, in place of those set before.
///
/// text: rules separated by commas, such as "warning, qel.algorithm=debug". "name=level" is for the logger of that name
/// and for all whose names continue it after a dot, the longest name winning; "level" alone is for all others, which
/// have "warning" without it; the later of two rules for one name holds. Levels: debug, information, notice, warning,
/// error, critical, off, or their first three letters or more. Throws std::invalid_argument, and changes nothing, when
/// the text is no such list. Any thread.
QEL_LOGGING_EXPORT void Configure(std::string_view text);

}  // namespace qel::logging
