#include "qel/logging/logger.hpp"

#include <exception>

#include "format.hpp"
#include "state.hpp"

namespace qel::logging {

Logger::Logger(Name const& name) : channel_(&State::Get().GetChannel(name)), threshold_(&channel_->threshold) {}

void Logger::Write(Level level, std::string_view format, Argument const* arguments, std::size_t count) const noexcept {
    try {
        State::Get().Write(level, channel_->name, Format(format, arguments, count));
    } catch (std::exception const&) {
        // No memory for the line: whoever logs must be able to go on.
    }
}

}  // namespace qel::logging
