#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "location.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::host {

/// The frames of a video that GStreamer opens, in order, as fast as they are read.
///
/// A few frames are decoded ahead, on GStreamer's own threads. The pixels of a frame are those of GStreamer's buffer;
/// a frame may be kept as long as one likes, also beyond the source. One thread at a time.
class VideoSource {
public:
    using Frame = media::video::FrameBase<void const>;

    /// Opens the video and waits for its first frame.
    /// formats: what the frames may be, most wanted first. stop: asked while waiting; true ends the stream early.
    /// Throws Error when there is no video to be had.
    VideoSource(Location location, std::vector<media::ColourFormat> const& formats, std::function<bool()> stop = {});
    VideoSource(VideoSource const&) = delete;
    VideoSource& operator=(VideoSource const&) = delete;
    ~VideoSource();

    /// The next frame; nothing at the end of the video, or when stop said so.
    /// A video that is damaged or cut short gives the frames it has, then throws Error.
    std::optional<Frame> Read();

    /// What is odd about a file that was read to its end without an error, as one line: it ended well before the time
    /// that its headers promise. Nothing when all is well.
    std::optional<std::string> GetWarning() const;

    Location const& GetLocation() const noexcept;
    /// The size of the first frame; 0 x 0 when stop left none.
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept;
    /// The number of frames that the file's headers promise; nothing for a stream without an end.
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept;
    /// Frames per second as the video declares them; 0 when it does not.
    double GetFrameRate() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::host
