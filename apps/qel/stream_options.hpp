#pragma once

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "location.hpp"
#include "open_source.hpp"

namespace qel::app {

/// What to do about a stream that ends, falls silent or goes away.
struct StreamOptions {
    /// Empty for an end of the run, "true" to open it again for ever, or in how many attempts.
    std::string reconnect;
    /// In seconds.
    std::optional<double> stallTimeout;
};

void AddStreamOptions(CLI::App& command, StreamOptions& options);

/// Throws UsageError when an option is given that means nothing for this video.
void CheckStreamOptions(StreamOptions const& options, host::Location const& location);

/// The options in the host's terms.
host::StreamPolicy ToPolicy(StreamOptions const& options);

}  // namespace qel::app
