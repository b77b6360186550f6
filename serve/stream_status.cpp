#include "stream_status.hpp"

#include <chrono>

#include "text.hpp"

namespace qel::serve {

std::string_view ToText(StreamStatus::State state) {
    switch (state) {
        case StreamStatus::State::Disabled:
            return "disabled";
        case StreamStatus::State::Starting:
            return "starting";
        case StreamStatus::State::Running:
            return "running";
        case StreamStatus::State::Waiting:
            return "waiting";
        case StreamStatus::State::Ended:
            return "ended";
    }
    return "unknown";
}

boost::json::object ToJson(StreamStatus const& status) {
    host::Losses const& losses = status.losses;
    return {{"id", status.id},
            {"state", ToText(status.state)},
            {"problem", host::ToValidUtf8(status.problem)},
            {"frames", status.frames},
            {"objects", status.objects},
            {"frames_per_second", status.framesPerSecond},
            {"width", status.size.width},
            {"height", status.size.height},
            {"restarts", status.restarts},
            {"losses",
             {{"interruptions", losses.interruptions},
              {"stalls", losses.stalls},
              {"returns", losses.returns},
              {"attempts", losses.attempts},
              {"away_s", std::chrono::duration<double>(losses.away).count()},
              {"dropped_frames", losses.droppedFrames}}},
            {"calibrated", status.calibrated}};
}

}  // namespace qel::serve
