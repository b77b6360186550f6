#include "stop_signal.hpp"

namespace qel::serve {

void StopSignal::Set() {
    std::lock_guard<std::mutex> const lock(mutex_);
    set_ = true;
    changed_.notify_all();
}

void StopSignal::Clear() {
    std::lock_guard<std::mutex> const lock(mutex_);
    set_ = false;
}

bool StopSignal::IsSet() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return set_;
}

void StopSignal::Wait() const {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return set_; });
}

bool StopSignal::WaitUntil(Clock::time_point time) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_until(lock, time, [this] { return set_; });
}

}  // namespace qel::serve
