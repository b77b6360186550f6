#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "frame_source.hpp"
#include "timeline.hpp"

namespace qel::serve {

/// What the frames of one stream have in common, whatever source each of them comes from.
class StreamFrames {
public:
    using Clock = std::chrono::steady_clock;

    /// Frames whose pixels somebody still holds. Any thread.
    std::int64_t GetHeld() const noexcept { return held_->load(std::memory_order_relaxed); }

    /// The frames of a source as the stream's next ones: their times go on after those before, with the time that
    /// has passed in between as the gap before the first. source: outlives the result, as the object does.
    std::unique_ptr<host::FrameSource> Continue(host::FrameSource& source);

private:
    class Source;

    host::Timeline timeline_;
    std::optional<Clock::time_point> lastFrame_;
    std::shared_ptr<std::atomic<std::int64_t>> held_ = std::make_shared<std::atomic<std::int64_t>>(0);
};

}  // namespace qel::serve
