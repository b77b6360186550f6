#pragma once

#include <chrono>
#include <optional>

namespace qel::serve {

/// Says when the frames of a recording are due, so that it plays as fast as a camera would show it.
///
/// Small delays are made up for: the frames that follow come as fast as they can. What is more than that is not, or a
/// machine that was busy for a minute would be busy for another: from there on all frames are later.
class Pace {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    /// A delay that is made up for.
    static constexpr Duration LongestDelay = std::chrono::milliseconds(500);
    /// No frame is waited for any longer, whatever times the recording gives.
    static constexpr Duration LongestWait = std::chrono::seconds(10);

    /// When a frame of that time is due, which may be over. The first one is due now.
    Time GetDue(Duration frameTime, Time now);

    /// By how much all delays that were not made up for have put the frames back.
    Duration GetDelay() const noexcept { return delay_; }

private:
    /// When the frame of time zero was due.
    std::optional<Time> start_;
    Duration lastFrameTime_{0};
    Duration delay_{0};
};

}  // namespace qel::serve
