#pragma once

#include <string>

#include <gst/video/video.h>

#include "gstreamer.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/time_point.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::host {

/// GStreamer's name of a colour format, as it stands in capabilities; null for a value without one.
char const* ToGstFormat(media::ColourFormat format) noexcept;

/// Wraps the buffer's pixels without copying them: the buffer stays mapped until the last frame that shares it is gone,
/// on whatever thread that happens. Throws Error when the buffer does not hold a frame of that description.
media::video::FrameBase<void const> WrapBuffer(GstBuffer* buffer, GstVideoInfo const& info, media::TimePoint timestamp,
                                               media::video::frame::Rotation rotation);

}  // namespace qel::host
