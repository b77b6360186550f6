#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "event_bus.hpp"
#include "frame_source.hpp"
#include "rate_meter.hpp"
#include "stream_status.hpp"

namespace qel::serve {

/// How a stream is doing, kept by its thread for all others; a new state goes to the bus as an event of kind "stream".
/// Any thread may ask; one tells, and others of what hangs alone.
class StreamState {
public:
    using Clock = std::chrono::steady_clock;

    /// bus: outlives the object.
    StreamState(std::string id, EventBus& bus);

    StreamStatus Get() const;
    std::uint64_t GetFrames() const;
    std::chrono::nanoseconds GetDelay() const;

    /// problem: one line, empty for none.
    void Tell(StreamStatus::State state, std::string problem = {});
    /// The same with the problem of before.
    void TellStill(StreamStatus::State state);
    /// That the stream, if it is at its frames, waits for what keeps it. frames: how many it had then; nothing is told
    /// where it has gone on since.
    void TellOfHanging(std::uint64_t frames, std::string problem);
    void SetCalibrated(bool calibrated);
    void CountRestart();
    /// The stream runs, and has one more frame.
    void CountFrame(host::FrameSource::Frame const& frame, std::size_t objects);
    /// What the source that is being read has lost, and how far behind its pace it is.
    void NoteSource(host::Losses const& losses, std::chrono::nanoseconds delay);
    /// The source is given up: another one begins its count at zero.
    void EndSource();

private:
    StreamStatus GetLocked() const;
    /// What there is to tell of the new state; nothing when it is that of before.
    std::optional<StreamStatus> SetLocked(StreamStatus::State state, std::string problem);
    void Publish(std::optional<StreamStatus> const& status) const;

    EventBus& bus_;
    // Held until a state is told, so that the last one that is told is the last one there was. Locked before the other.
    std::mutex telling_;
    mutable std::mutex mutex_;
    StreamStatus status_;
    bool hasTold_ = false;
    RateMeter rate_;
    /// Of sources that were given up, and of the present one.
    host::Losses formerLosses_, losses_;
    std::chrono::nanoseconds formerDelay_{0}, delay_{0};
};

}  // namespace qel::serve
