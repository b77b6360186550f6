#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace qel::serve {

/// Tells a thread to leave off what it does, also while it waits. Any thread.
class StopSignal {
public:
    using Clock = std::chrono::steady_clock;

    void Set();
    void Clear();
    bool IsSet() const;

    /// Waits until the signal is set; WaitUntil until then at the latest, and says whether it is.
    void Wait() const;
    bool WaitUntil(Clock::time_point time) const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool set_ = false;
};

}  // namespace qel::serve
