#include "stream_options.hpp"

#include <chrono>

#include "error.hpp"

namespace qel::app {
namespace {

/// What is wrong with the value of --reconnect; nothing when it has none, or a number of attempts.
std::string CheckAttempts(std::string const& text) {
    bool const isNumber =
        !text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos;
    if (text == "true" || (isNumber && text.find_first_not_of('0') != std::string::npos)) return {};
    return "'" + text + "' is no number of attempts: give a whole number from 1";
}

/// What is wrong with a length of time; nothing when it is one.
std::string CheckSeconds(std::string const& text) {
    bool const isNumber = text.size() < 10 && text.find_first_of("0123456789") != std::string::npos &&
                          text.find_first_not_of("0123456789.") == std::string::npos &&
                          text.find('.') == text.rfind('.');
    return isNumber ? std::string() : "'" + text + "' is no number of seconds";
}

}  // namespace

void AddStreamOptions(CLI::App& command, StreamOptions& options) {
    command
        .add_flag(
            "--reconnect", options.reconnect,
            "Opens a stream again when it ends, fails or falls silent; --reconnect=N gives up after N attempts in "
            "a row that fail")
        ->check(CheckAttempts);
    command
        .add_option("--stall-timeout", options.stallTimeout,
                    "How long a stream may give no frame before it counts as lost (10); 0: for ever")
        ->type_name("SECONDS")
        ->check(CheckSeconds);
}

void CheckStreamOptions(StreamOptions const& options, host::Location const& location) {
    if (host::IsStream(location)) return;
    if (options.reconnect.empty() && !options.stallTimeout) return;
    std::string const option = options.reconnect.empty() ? "--stall-timeout" : "--reconnect";
    throw host::UsageError(option + " is for streams, which may go away and come back; '" + location.name +
                           (location.file ? "' is a file" : "' is read once"));
}

host::StreamPolicy ToPolicy(StreamOptions const& options) {
    host::StreamPolicy policy;
    if (!options.reconnect.empty()) policy.reconnect.emplace();
    if (policy.reconnect && options.reconnect != "true") policy.reconnect->attempts = std::stoull(options.reconnect);
    if (options.stallTimeout) {
        policy.silence =
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(*options.stallTimeout));
    }
    return policy;
}

}  // namespace qel::app
