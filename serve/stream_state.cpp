#include "stream_state.hpp"

#include <utility>

#include <boost/json/serialize.hpp>

namespace qel::serve {
namespace {

host::Losses Sum(host::Losses const& left, host::Losses const& right) {
    return {
        left.interruptions + right.interruptions, left.stalls + right.stalls, left.returns + right.returns,
        left.attempts + right.attempts,           left.away + right.away,     left.droppedFrames + right.droppedFrames};
}

}  // namespace

StreamState::StreamState(std::string id, EventBus& bus) : bus_(bus) { status_.id = std::move(id); }

StreamStatus StreamState::GetLocked() const {
    StreamStatus status = status_;
    status.framesPerSecond = rate_.Get(Clock::now());
    status.losses = Sum(formerLosses_, losses_);
    return status;
}

StreamStatus StreamState::Get() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return GetLocked();
}

std::uint64_t StreamState::GetFrames() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return status_.frames;
}

std::chrono::nanoseconds StreamState::GetDelay() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return formerDelay_ + delay_;
}

void StreamState::Tell(StreamStatus::State state, std::string problem) {
    StreamStatus told;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (status_.state == state && status_.problem == problem && hasTold_) return;
        hasTold_ = true;
        status_.state = state;
        status_.problem = std::move(problem);
        if (state != StreamStatus::State::Running) rate_.Reset();
        told = GetLocked();
    }
    bus_.Publish({.kind = "stream", .stream = told.id, .data = boost::json::serialize(ToJson(told))});
}

void StreamState::TellStill(StreamStatus::State state) { Tell(state, Get().problem); }

void StreamState::SetCalibrated(bool calibrated) {
    std::lock_guard<std::mutex> const lock(mutex_);
    status_.calibrated = calibrated;
}

void StreamState::CountRestart() {
    std::lock_guard<std::mutex> const lock(mutex_);
    ++status_.restarts;
}

void StreamState::CountFrame(host::FrameSource::Frame const& frame, std::size_t objects) {
    std::lock_guard<std::mutex> const lock(mutex_);
    ++status_.frames;
    status_.objects += objects;
    status_.size = frame.GetSize();
    rate_.Count(Clock::now());
}

void StreamState::NoteSource(host::Losses const& losses, std::chrono::nanoseconds delay) {
    std::lock_guard<std::mutex> const lock(mutex_);
    losses_ = losses;
    delay_ = delay;
}

void StreamState::EndSource() {
    std::lock_guard<std::mutex> const lock(mutex_);
    formerLosses_ = Sum(formerLosses_, std::exchange(losses_, {}));
    formerDelay_ += std::exchange(delay_, {});
}

}  // namespace qel::serve
