#pragma once

#include <string>

#include "location.hpp"

namespace qel::app {

/// Where a run writes; an empty path: not written.
struct RunOutputs {
    /// "-" is the standard output.
    std::string results = "-";
    std::string video{};
    std::string picture{};
};

/// Throws UsageError unless each output is a file of its own, neither the video nor the calibration, as opening it
/// empties it, and is named for what will be in it: .mp4 or .png. Devices and pipes may have any name.
/// calibration: its file; may be empty. Reads and writes nothing.
void CheckRunOutputs(RunOutputs const& outputs, host::Location const& location, std::string const& calibration);

}  // namespace qel::app
