#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "frame_source.hpp"
#include "timeline.hpp"

namespace qel::serve {

/// A video that begins anew whenever it ends; the times of its frames go on, one frame's time after the last, so that
/// the algorithms see a camera that never stops.
class LoopedSource final : public host::FrameSource {
public:
    /// What opens the video at its beginning and waits for its first frame.
    using Open = std::function<std::unique_ptr<host::FrameSource>()>;

    /// Opens the video. stop: asked at each end; true ends the source.
    LoopedSource(Open open, std::function<bool()> stop);

    /// Nothing only when told to stop. Throws Error for a video without frames, and what opening and reading throw.
    std::optional<Frame> Read() override;

    std::optional<std::chrono::nanoseconds> GetGap() const override { return std::nullopt; }
    host::Losses GetLosses() const override { return source_ ? source_->GetLosses() : host::Losses(); }
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override { return size_; }
    double GetFrameRate() const noexcept override { return frameRate_; }
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override { return std::nullopt; }
    std::optional<std::string> GetWarning() const override { return std::nullopt; }

private:
    Open open_;
    std::function<bool()> stop_;
    std::unique_ptr<host::FrameSource> source_;
    geometry::Dimension<unsigned int, 2> size_{};
    double frameRate_ = 0;
    host::Timeline timeline_;
    bool atStart_ = true;
};

}  // namespace qel::serve
