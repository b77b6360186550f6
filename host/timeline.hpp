#pragma once

#include <chrono>
#include <optional>

namespace qel::host {

/// Puts the times of a stream's frames on one line that only rises, however often the stream begins anew.
class Timeline {
public:
    using Time = std::chrono::nanoseconds;

    /// The time of the next frame, given its time in the stream. Times that do not rise, because the stream's clock was
    /// set back, go on one step after the last.
    Time Place(Time streamTime);

    /// The stream begins anew: its next frame, whatever time it bears, comes so long after the last one.
    void Interrupt(Time away) { away_ = away; }

private:
    static constexpr Time UsualStep = std::chrono::milliseconds(40);

    std::optional<Time> last_;
    std::optional<Time> away_;
    Time offset_{0};
    Time step_ = UsualStep;
};

}  // namespace qel::host
