#pragma once

#include <memory>
#include <mutex>
#include <string>

#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include "gstreamer.hpp"
#include "video_source.hpp"

namespace qel::test {

/// What a test camera sees: a video file over and over, or a bright square that moves over grey.
class FrameFeed {
public:
    /// video: a file; empty for the square, in frames of 320 x 240 pixels.
    FrameFeed(std::string video, unsigned int framesPerSecond);

    /// Describes the frames to a source and has it ask for them as it needs them, at the pace of its clock.
    void Serve(GstAppSrc* source);
    /// Gives no frame, or goes on giving them.
    void Stall(bool stalled);
    /// Ends the stream in an orderly way.
    void End();

private:
    static void OnNeedData(GstAppSrc* source, guint, gpointer feed);
    void Push(GstAppSrc* source);
    host::GstPtr<GstBuffer> NextFrame();
    void Paint(GstVideoFrame& picture) const;
    void CopyVideo(GstVideoFrame& picture);

    std::mutex mutex_;
    std::string video_;
    GstVideoInfo info_;
    std::unique_ptr<host::VideoSource> file_;
    /// The source that is served; the feed holds on to it.
    host::GstPtr<GstElement> source_;
    GstClockTime next_ = 0;
    unsigned int index_ = 0;
    bool stalled_ = false;
    /// Whether the source asked for a frame and got none.
    bool hungry_ = false;
};

}  // namespace qel::test
