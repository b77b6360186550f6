#include "looped_source.hpp"

#include <utility>

#include "error.hpp"
#include "working_frame.hpp"

namespace qel::serve {

LoopedSource::LoopedSource(Open open, std::function<bool()> stop)
    : open_(std::move(open)),
      stop_(std::move(stop)),
      source_(open_()),
      size_(source_->GetFrameSize()),
      frameRate_(source_->GetFrameRate()) {}

std::optional<host::FrameSource::Frame> LoopedSource::Read() {
    while (true) {
        if (!source_) source_ = open_();
        if (auto const frame = source_->Read()) {
            atStart_ = false;
            // A time that does not rise, as the first one of each turn, goes on one step after the last.
            return host::WithTimestamp(*frame,
                                       media::TimePoint(timeline_.Place(frame->GetTimestamp().time_since_epoch())));
        }
        if (stop_()) return std::nullopt;
        if (std::exchange(atStart_, true)) throw host::Error("the video holds no frames to begin anew with");
        // The old one goes first: two decoders at a time would take twice the memory.
        source_.reset();
    }
}

}  // namespace qel::serve
