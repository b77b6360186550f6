#include "console.hpp"

#include <memory>
#include <string>

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_sinks.h>

#include "qel/type/to_string.hpp"

namespace qel::logging {
namespace {

std::unique_ptr<spdlog::sinks::sink> MakeSink() {
    auto sink = std::make_unique<spdlog::sinks::stderr_sink_mt>();
    sink->set_formatter(
        std::make_unique<spdlog::pattern_formatter>("%Y-%m-%dT%H:%M:%S.%eZ %v", spdlog::pattern_time_type::utc));
    return sink;
}

}  // namespace

void WriteToConsole(Level level, std::string_view name, std::string_view text) {
    // Never destroyed: static objects may still log while they are.
    static spdlog::sinks::sink* const sink = MakeSink().release();
    std::string line = type::ToString(level);
    line.append(" ").append(name).append(": ").append(text);
    sink->log(spdlog::details::log_msg(spdlog::string_view_t(), spdlog::level::info, line));
}

}  // namespace qel::logging
