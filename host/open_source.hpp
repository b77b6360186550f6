#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_source.hpp"
#include "location.hpp"
#include "qel/media/colour_format.hpp"
#include "reconnecting_source.hpp"

namespace qel::host {

/// What to do about a stream that ends, falls silent or goes away.
struct StreamPolicy {
    /// How it is got back; nothing: that is its end.
    std::optional<ReconnectPolicy> reconnect{};
    /// How long it may give no frame before it counts as lost; zero: for ever.
    std::chrono::nanoseconds silence = std::chrono::seconds(10);
};

/// Opens a video, once or again and again, and waits for its first frame.
/// formats: what the frames may be, most wanted first. stop: asked while waiting; true ends the source. say: told of
/// each loss and return of a stream that is reconnected, as one line. Throws as VideoSource and ReconnectingSource do.
std::unique_ptr<FrameSource> OpenSource(Location const& location, std::vector<media::ColourFormat> const& formats,
                                        StreamPolicy const& policy, std::function<bool()> const& stop,
                                        ReconnectingSource::Say const& say);

}  // namespace qel::host
