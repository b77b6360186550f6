#include "timeline.hpp"

#include <algorithm>

namespace qel::host {

Timeline::Time Timeline::Place(Time streamTime) {
    if (last_) {
        bool const interrupted = away_.has_value();
        bool const setBack = !interrupted && streamTime + offset_ <= *last_;
        Time const next = *last_ + (interrupted ? std::max(*away_, Time(1)) : step_);
        if (interrupted || setBack) {
            offset_ = next - streamTime;
        } else {
            step_ = streamTime + offset_ - *last_;
        }
    }
    away_.reset();
    last_ = streamTime + offset_;
    return *last_;
}

}  // namespace qel::host
