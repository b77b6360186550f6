#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

#include "qel/logging/argument.hpp"
#include "qel/logging/export.hpp"
#include "qel/logging/level.hpp"
#include "qel/logging/name.hpp"

namespace qel::logging {

struct Channel;

/// Writes lines under a dotted name: to the standard error output, or to the sinks that are bound.
///
/// Made once for a source file, at namespace scope; usable before main and after it. Copies share name and threshold.
/// Any thread.
class Logger {
public:
    QEL_LOGGING_EXPORT explicit Logger(Name const& name);

    /// Whether a line of this level would be written.
    bool IsEnabled(Level level) const noexcept {
        return level >= threshold_->load(std::memory_order_relaxed) && level < Level::Off;
    }

    /// Writes a line, "%0%" standing for the first argument, "%1%" for the second and so on, each written by its
    /// operator<<. "%%" stands for one "%"; a placeholder without an argument, and any other "%", stays as it is.
    ///
    /// Costs a comparison when the level is off: no argument is looked at. Never throws: an argument that cannot be
    /// written stands as "(unprintable)", and a line for which there is no memory is lost.
    template <class... Arguments>
    void Log(Level level, std::string_view format, Arguments const&... arguments) const noexcept {
        if (!IsEnabled(level)) return;
        std::array<Argument, sizeof...(Arguments)> const list{Argument(arguments)...};
        Write(level, format, list.data(), list.size());
    }

private:
    QEL_LOGGING_EXPORT void Write(Level level, std::string_view format, Argument const* arguments,
                                  std::size_t count) const noexcept;

    Channel const* channel_;
    std::atomic<Level> const* threshold_;  // of the channel: looked at without a call
};

}  // namespace qel::logging
