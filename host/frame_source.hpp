#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "qel/geometry/dimension.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::host {

/// What a source could not give.
struct Losses {
    /// How often the source was lost: it ended, failed or fell silent.
    std::uint64_t interruptions = 0;
    /// How many of these were silences.
    std::uint64_t stalls = 0;
    /// How often it came back.
    std::uint64_t returns = 0;
    /// Connections that were tried again, with success or without.
    std::uint64_t attempts = 0;
    /// Time between the last frame before an interruption and the first one after it, over all of them.
    std::chrono::nanoseconds away{0};
    /// Frames of a live source that were given up because nobody read them in time.
    std::uint64_t droppedFrames = 0;

    bool operator==(Losses const&) const = default;
};

/// Where the frames of a run come from, in order. One thread at a time.
class FrameSource {
public:
    using Frame = media::video::FrameBase<void const>;

    FrameSource() = default;
    FrameSource(FrameSource const&) = delete;
    FrameSource& operator=(FrameSource const&) = delete;
    virtual ~FrameSource() = default;

    /// The next frame; nothing at the end, or when the source was told to stop. Throws Error when there should be more.
    virtual std::optional<Frame> Read() = 0;

    /// For how long the source was away just before the frame of the last Read; nothing when it was not.
    virtual std::optional<std::chrono::nanoseconds> GetGap() const = 0;
    virtual Losses GetLosses() const = 0;

    /// The size of the first frame; 0 x 0 when there was none.
    virtual geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept = 0;
    /// Frames per second as the source declares them; 0 when it does not.
    virtual double GetFrameRate() const noexcept = 0;
    /// Whether frames come at a pace of their own, and are lost when nobody reads them in time.
    virtual bool IsLive() const noexcept { return false; }
    /// How many frames there will be; nothing for a source without a known end.
    virtual std::optional<std::uint64_t> GetExpectedFrames() const noexcept = 0;
    /// What is odd about a source that was read to its end without an error, as one line; nothing when all is well.
    virtual std::optional<std::string> GetWarning() const = 0;
};

}  // namespace qel::host
