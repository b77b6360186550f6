#pragma once

#include <functional>
#include <string_view>

#include "qel/logging/export.hpp"
#include "qel/logging/level.hpp"
#include "qel/type/binding.hpp"

namespace qel::logging {

/// Takes a line: its level, the name of its logger and its text.
using Sink = std::function<void(Level level, std::string_view name, std::string_view text)>;

/// Sends all lines to a sink, instead of the standard error output, until the binding is dropped; several sinks may be
/// bound, and each gets every line.
///
/// Sinks are called on the threads that log, one line at a time; they must not wait for locks that a thread holds while
/// it logs. What a sink throws is ignored; what it logs goes to the standard error output. The binding may be dropped
/// on any thread, also by the sink itself; elsewhere the drop waits for a call that is running.
QEL_LOGGING_EXPORT type::Binding BindSink(Sink sink);

}  // namespace qel::logging
