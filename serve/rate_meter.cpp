#include "rate_meter.hpp"

#include <algorithm>

namespace qel::serve {

void RateMeter::Count(Time now) {
    if (times_.empty() && first_ == Time()) first_ = now;
    while (!times_.empty() && times_.front() <= now - Window) times_.pop_front();
    times_.push_back(now);
}

double RateMeter::Get(Time now) const {
    auto const from = std::upper_bound(times_.begin(), times_.end(), now - Window);
    auto count = times_.end() - from;
    std::chrono::duration<double> span = Window;
    if (first_ > now - Window && count > 0) {
        // The first one opens the time that the others fill.
        span = now - first_;
        --count;
    }
    return count > 0 && span.count() > 0 ? static_cast<double>(count) / span.count() : 0;
}

}  // namespace qel::serve
