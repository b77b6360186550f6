#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_source.hpp"
#include "location.hpp"
#include "qel/media/colour_format.hpp"

namespace qel::host {

/// The frames of a video that GStreamer opens, in order, as fast as they are read.
///
/// A few frames are decoded ahead, on GStreamer's own threads. The pixels of a frame are those of GStreamer's buffer;
/// a frame may be kept as long as one likes, also beyond the source. A live source goes at its own pace: frames that
/// are not read in time are dropped, the oldest first.
class VideoSource final : public FrameSource {
public:
    /// Opens the video and waits for its first frame.
    /// formats: what the frames may be, most wanted first. stop: asked while waiting; true ends the stream early.
    /// silence: how long a stream may give no frame before it counts as lost, at least 10 seconds for its first one;
    /// zero: for ever.
    /// Throws LostError when a stream is not there, Error when there is no video to be had.
    VideoSource(Location location, std::vector<media::ColourFormat> const& formats, std::function<bool()> stop = {},
                std::chrono::nanoseconds silence = {});
    ~VideoSource() override;

    /// The next frame; nothing at the end of the video, or when stop said so.
    /// A file that is damaged or cut short gives the frames it has, then throws Error; a stream that goes away or falls
    /// silent throws LostError. The times of a stream's frames only rise.
    std::optional<Frame> Read() override;

    /// A file that ended well before the time that its headers promise is odd.
    std::optional<std::string> GetWarning() const override;

    /// Nothing: a video that was lost ends.
    std::optional<std::chrono::nanoseconds> GetGap() const override { return std::nullopt; }
    /// Only frames are ever lost.
    Losses GetLosses() const override;
    Location const& GetLocation() const noexcept;
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override;
    /// As many as the headers promise.
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override;
    double GetFrameRate() const noexcept override;
    bool IsLive() const noexcept override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::host
