#include "pace.hpp"

namespace qel::serve {

Pace::Time Pace::GetDue(Duration frameTime, Time now) {
    bool const goesBack = start_ && frameTime < lastFrameTime_;
    lastFrameTime_ = frameTime;
    if (!start_ || goesBack) start_ = now - frameTime;
    Duration const ahead = *start_ + frameTime - now;
    if (ahead < -LongestDelay) {
        delay_ -= ahead;
        start_ = now - frameTime;
    } else if (ahead > LongestWait) {
        start_ = now + LongestWait - frameTime;
    }
    return *start_ + frameTime;
}

}  // namespace qel::serve
