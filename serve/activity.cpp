#include "activity.hpp"

#include <utility>

namespace qel::serve {

void Activity::Set(Kind kind) noexcept {
    // First the time, so that nobody takes what begins now for what has been going on.
    since_ = Clock::now().time_since_epoch().count();
    kind_ = kind;
}

bool Activity::IsHanging(Clock::duration time) const noexcept {
    if (kind_ == Kind::Waiting) return false;
    return Clock::now() - Clock::time_point(Clock::duration(since_)) > time;
}

void Activity::SetAlgorithms(std::vector<std::string> names, std::shared_ptr<std::atomic<std::size_t> const> place) {
    std::lock_guard const lock(mutex_);
    names_ = std::move(names);
    place_ = std::move(place);
}

std::string Activity::Describe() const {
    switch (kind_) {
        case Kind::Waiting:
            break;
        case Kind::MakingAlgorithms:
            return "its algorithms are still being made";
        case Kind::Source:
            return "its source has not returned";
        case Kind::Publishing:
            return "what it has found is still being taken";
        case Kind::Algorithms: {
            std::lock_guard const lock(mutex_);
            std::size_t const place = place_ ? place_->load(std::memory_order_relaxed) : 0;
            return "the algorithm '" + (place < names_.size() ? names_[place] : "") + "' has not returned";
        }
    }
    return "it is still at work";
}

}  // namespace qel::serve
