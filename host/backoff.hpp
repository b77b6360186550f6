#pragma once

#include <chrono>
#include <cstdint>
#include <random>

namespace qel::host {

/// How long to wait before trying again: twice as long each time up to a limit, and by chance up to half of it less, so
/// that many who lost the same server do not come back at one moment.
class Backoff {
public:
    using Time = std::chrono::milliseconds;

    Backoff(Time first, Time longest, std::uint32_t seed = std::random_device()())
        : first_(first), longest_(longest), next_(first), random_(seed) {}

    Time Next();
    /// Begins with the first wait again.
    void Reset() noexcept { next_ = first_; }

private:
    Time first_;
    Time longest_;
    Time next_;
    std::mt19937 random_;
};

}  // namespace qel::host
