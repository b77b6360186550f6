#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "frame_source.hpp"
#include "location.hpp"
#include "qel/media/colour_format.hpp"

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

/// Opens the video and waits for its first frame. stop: true ends the source; warn: told of losses and returns.
std::unique_ptr<host::FrameSource> OpenSource(StreamOptions const& options, host::Location const& location,
                                              std::vector<media::ColourFormat> const& formats,
                                              std::function<bool()> const& stop,
                                              std::function<void(std::string const&)> const& warn);

}  // namespace qel::app
