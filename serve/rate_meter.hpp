#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

namespace qel::serve {

/// How many a second there have been lately. One thread at a time.
class RateMeter {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// What "lately" means.
    static constexpr std::chrono::seconds Window{3};

    void Count(Time now);
    /// A second's share of what came within the window; of the time since the first one where that is shorter.
    double Get(Time now) const;
    void Reset() { times_.clear(), first_ = {}; }

private:
    std::deque<Time> times_;
    Time first_{};
};

}  // namespace qel::serve
