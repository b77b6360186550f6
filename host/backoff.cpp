#include "backoff.hpp"

#include <algorithm>

namespace qel::host {

Backoff::Time Backoff::Next() {
    Time const whole = std::min(next_, longest_);
    next_ = std::min(2 * whole, longest_);
    std::uniform_int_distribution<Time::rep> less(0, whole.count() / 2);
    return whole - Time(less(random_));
}

}  // namespace qel::host
