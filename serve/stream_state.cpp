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
    std::lock_guard<std::mutex> const telling(telling_);
    std::optional<StreamStatus> told;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        told = SetLocked(state, std::move(problem));
    }
    Publish(told);
}

void StreamState::TellOfHanging(std::uint64_t frames, std::string problem) {
    std::lock_guard<std::mutex> const telling(telling_);
    std::optional<StreamStatus> told;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        bool const isAtIt =
            status_.state == StreamStatus::State::Running || status_.state == StreamStatus::State::Starting;
        if (!isAtIt || status_.frames != frames) return;
        told = SetLocked(StreamStatus::State::Waiting, std::move(problem));
    }
    Publish(told);
}

std::optional<StreamStatus> StreamState::SetLocked(StreamStatus::State state, std::string problem) {
    if (status_.state == state && status_.problem == problem && hasTold_) return std::nullopt;
    hasTold_ = true;
    status_.state = state;
    status_.problem = std::move(problem);
    if (state != StreamStatus::State::Running) rate_.Reset();
    return GetLocked();
}

void StreamState::Publish(std::optional<StreamStatus> const& status) const {
    if (!status) return;
    bus_.Publish({.kind = "stream", .stream = status->id, .data = boost::json::serialize(ToJson(*status))});
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
    std::lock_guard<std::mutex> const telling(telling_);
    std::optional<StreamStatus> told;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        ++status_.frames;
        status_.objects += objects;
        status_.size = frame.GetSize();
        rate_.Count(Clock::now());
        told = SetLocked(StreamStatus::State::Running, {});
    }
    Publish(told);
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
