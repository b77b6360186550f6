#include "support/frame_feed.hpp"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace qel::test {
namespace {

constexpr unsigned int Width = 320;
constexpr unsigned int Height = 240;
constexpr unsigned int Side = 48;

}  // namespace

FrameFeed::FrameFeed(std::string video, unsigned int framesPerSecond) : video_(std::move(video)) {
    host::InitialiseGStreamer();
    unsigned int width = Width;
    unsigned int height = Height;
    if (!video_.empty()) {
        file_ = std::make_unique<host::VideoSource>(host::Locate(video_), std::vector{media::ColourFormat::Nv12});
        width = file_->GetFrameSize().width;
        height = file_->GetFrameSize().height;
    }
    gst_video_info_set_format(&info_, GST_VIDEO_FORMAT_NV12, width, height);
    info_.fps_n = static_cast<gint>(framesPerSecond);
    info_.fps_d = 1;
}

void FrameFeed::Serve(GstAppSrc* source) {
    std::lock_guard<std::mutex> const lock(mutex_);
    host::GstPtr<GstCaps> const caps(gst_video_info_to_caps(&info_));
    g_object_set(source, "caps", caps.get(), "format", GST_FORMAT_TIME, "is-live", TRUE, nullptr);
    source_.reset(GST_ELEMENT(gst_object_ref(source)));
    next_ = 0;
    hungry_ = false;
    GstAppSrcCallbacks callbacks{};
    callbacks.need_data = OnNeedData;
    gst_app_src_set_callbacks(source, &callbacks, this, nullptr);
}

void FrameFeed::OnNeedData(GstAppSrc* source, guint, gpointer feed) { static_cast<FrameFeed*>(feed)->Push(source); }

void FrameFeed::Push(GstAppSrc* source) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (GST_ELEMENT(source) != source_.get()) return;
    hungry_ = stalled_;
    if (stalled_) return;
    GstClockTime const step = GST_SECOND / static_cast<GstClockTime>(info_.fps_n);
    GstClockTime const now = gst_element_get_current_running_time(source_.get());
    // After a pause the camera shows what is now, not what was missed.
    if (GST_CLOCK_TIME_IS_VALID(now) && now > next_ + GST_SECOND) next_ = now;
    host::GstPtr<GstBuffer> buffer = NextFrame();
    GST_BUFFER_PTS(buffer.get()) = next_;
    GST_BUFFER_DURATION(buffer.get()) = step;
    next_ += step;
    gst_app_src_push_buffer(source, buffer.release());
}

host::GstPtr<GstBuffer> FrameFeed::NextFrame() {
    host::GstPtr<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info_.size, nullptr));
    GstVideoFrame picture;
    gst_video_frame_map(&picture, &info_, buffer.get(), GST_MAP_WRITE);
    if (video_.empty()) {
        Paint(picture);
    } else {
        CopyVideo(picture);
    }
    gst_video_frame_unmap(&picture);
    ++index_;
    return buffer;
}

void FrameFeed::Paint(GstVideoFrame& picture) const {
    auto const rows = [&](guint plane) {
        return static_cast<std::size_t>(GST_VIDEO_FRAME_COMP_HEIGHT(&picture, plane));
    };
    auto const stride = [&](guint plane) {
        return static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane));
    };
    auto* const luma = static_cast<guint8*>(GST_VIDEO_FRAME_PLANE_DATA(&picture, 0));
    std::memset(luma, 50, rows(0) * stride(0));
    std::memset(GST_VIDEO_FRAME_PLANE_DATA(&picture, 1), 128, rows(1) * stride(1));
    std::size_t const x = 8 * index_ % (Width - Side);
    for (std::size_t y = 64; y < 64 + Side; ++y) std::memset(luma + y * stride(0) + x, 220, Side);
}

void FrameFeed::CopyVideo(GstVideoFrame& picture) {
    std::optional<host::VideoSource::Frame> frame = file_->Read();
    if (!frame) {
        file_ = std::make_unique<host::VideoSource>(host::Locate(video_), std::vector{media::ColourFormat::Nv12});
        frame = file_->Read();
    }
    for (guint plane = 0; plane < 2; ++plane) {
        auto const& from = frame->GetPlane(plane);
        auto const fromStride = static_cast<std::size_t>(from.GetStride());
        auto const toStride = static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane));
        auto const* in = static_cast<std::uint8_t const*>(from.GetBuffer());
        auto* out = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&picture, plane));
        std::size_t const bytes = std::min({fromStride, toStride, static_cast<std::size_t>(info_.width)});
        auto const rows = GST_VIDEO_FRAME_COMP_HEIGHT(&picture, plane);
        for (gint row = 0; row < rows; ++row, in += fromStride, out += toStride) std::memcpy(out, in, bytes);
    }
}

void FrameFeed::Stall(bool stalled) {
    // Held on to: another source may take its place meanwhile.
    host::GstPtr<GstElement> hungry;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        stalled_ = stalled;
        if (!stalled && hungry_) hungry.reset(GST_ELEMENT(gst_object_ref(source_.get())));
    }
    if (hungry) Push(GST_APP_SRC(hungry.get()));
}

void FrameFeed::End() {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (source_) gst_app_src_end_of_stream(GST_APP_SRC(source_.get()));
}

}  // namespace qel::test
