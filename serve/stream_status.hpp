#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <boost/json/object.hpp>

#include "frame_source.hpp"
#include "qel/geometry/dimension.hpp"

namespace qel::serve {

/// How a stream is doing.
struct StreamStatus {
    enum class State {
        Disabled,  ///< the configuration says so
        Starting,  ///< opening its source
        Running,
        Waiting,  ///< it failed, and is tried again at the end of a pause
        Ended     ///< a file that is not looped came to its end
    };

    std::string id{};
    State state = State::Starting;
    /// Why it waits, as one line; empty when nothing is wrong.
    std::string problem{};
    std::uint64_t frames = 0;
    std::uint64_t objects = 0;
    /// Over the last seconds.
    double framesPerSecond = 0;
    /// 0 x 0 before the first frame.
    geometry::Dimension<unsigned int, 2> size{};
    /// How often it was started again after a failure.
    std::uint64_t restarts = 0;
    host::Losses losses{};
    bool calibrated = false;
};

/// "disabled", "starting", ...
std::string_view ToText(StreamStatus::State state);

/// As the program tells it to others: {"id", "state", "problem", "frames", "objects", "frames_per_second", "width",
/// "height", "restarts", "losses": {"interruptions", "stalls", "returns", "attempts", "away_s", "dropped_frames"},
/// "calibrated"}.
boost::json::object ToJson(StreamStatus const& status);

}  // namespace qel::serve
