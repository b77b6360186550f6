#pragma once

#include <cstdint>
#include <memory>

#include "qel/media/video/frame.hpp"

namespace qel::host {

/// A frame on its way through the algorithms of a run; it is copied when pixels that others hold are to be changed.
///
/// Keeps the memory of its copies from frame to frame, unless somebody holds it. One thread at a time; the frames that
/// it gives may be kept and released on any thread.
class WorkingFrame {
public:
    using Frame = media::video::FrameBase<void const>;
    using Writable = media::video::FrameBase<void>;

    /// Begins with a frame, whose pixels are never written.
    void Start(Frame frame);
    /// The frame as it stands, to be read, and kept as long as one likes: its pixels change no more.
    Frame Get() const;
    /// The frame with pixels that nobody else holds. Changes show in Get from then on; the writable frame must be gone
    /// by the next call of anything but Get, or the pixels are copied again.
    Writable Change();

    /// How often pixels have been copied.
    std::uint64_t GetCopies() const noexcept { return copies_; }

private:
    struct Pixels;

    void CopyFrom(Frame const& frame);

    Frame original_;
    std::shared_ptr<Pixels> own_;
    /// Whether own_ is the frame as it stands; otherwise it is memory of an earlier one.
    bool isOwn_ = false;
    std::uint64_t copies_ = 0;
};

/// A frame with pixels of its own, which may be written.
media::video::FrameBase<void> CopyFrame(media::video::FrameBase<void const> const& frame);

/// The same frame, to be read only; shares the pixels.
media::video::FrameBase<void const> MakeReadOnly(media::video::FrameBase<void> const& frame);

/// The same frame at another time; shares the pixels.
media::video::FrameBase<void const> WithTimestamp(media::video::FrameBase<void const> const& frame,
                                                  media::TimePoint time);

}  // namespace qel::host
