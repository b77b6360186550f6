#include "video_writer.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include "canvas.hpp"
#include "error.hpp"
#include "gstreamer.hpp"

namespace qel::host {
namespace {

constexpr guint64 QueuedPictures = 16;
constexpr unsigned int SmallestSide = 16;  // that the MP4 muxer takes
constexpr GstClockTime PollTime = 5 * GST_MSECOND;
constexpr guint FragmentMilliseconds = 1000;
constexpr int Unbuffered = 2;

Picture::Size EvenSize(Picture::Size size) { return {size.width + size.width % 2, size.height + size.height % 2}; }

/// The picture with its last column and row repeated where the even size needs it.
Picture MakeEven(Picture picture) {
    Picture::Size const size = EvenSize(picture.size);
    if (size == picture.size) return picture;
    Picture even(size);
    for (unsigned int y = 0; y < size.height; ++y) {
        std::size_t const from = std::size_t{std::min(y, picture.size.height - 1)} * picture.size.width;
        std::size_t const to = std::size_t{y} * size.width;
        for (unsigned int x = 0; x < size.width; ++x) {
            even.pixels[to + x] = picture.pixels[from + std::min(x, picture.size.width - 1)];
        }
    }
    return even;
}

void DeletePixels(gpointer pixels) { delete static_cast<std::vector<std::uint32_t>*>(pixels); }

/// A buffer that owns the picture's pixels.
GstPtr<GstBuffer> ToBuffer(Picture picture) {
    auto* const pixels = new std::vector<std::uint32_t>(std::move(picture.pixels));
    gsize const size = pixels->size() * sizeof(std::uint32_t);
    return GstPtr<GstBuffer>(gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels->data(), size, 0, size,
                                                         pixels, DeletePixels));
}

}  // namespace

struct VideoWriter::Impl {
    Impl(std::string file, Picture::Size pictureSize, double frameRate);

    void CheckErrors() const;
    [[noreturn]] void Fail(GstMessage* message) const;

    std::string path;
    Picture::Size size;
    Pipeline pipeline{"qel-writer"};
    GstElement* source = nullptr;
    std::chrono::nanoseconds first{-1};
    GstClockTime frameTime = 0;
    bool anyWritten = false;
};

VideoWriter::Impl::Impl(std::string file, Picture::Size pictureSize, double frameRate)
    : path(std::move(file)), size(EvenSize(pictureSize)) {
    if (std::min(size.width, size.height) < SmallestSide) {
        throw Error("cannot write '" + path + "': MP4 needs pictures of 16 x 16 pixels or more, these have " +
                    std::to_string(pictureSize.width) + " x " + std::to_string(pictureSize.height));
    }
    gint numerator = 25;
    gint denominator = 1;
    if (frameRate > 0) gst_util_double_to_fraction(frameRate, &numerator, &denominator);
    frameTime = gst_util_uint64_scale_int(GST_SECOND, denominator, numerator);
    GstElement* const bin = pipeline.Get();
    source = AddTo(bin, MakeElement("appsrc"));
    GstElement* const converter = AddTo(bin, MakeElement("videoconvert"));
    GstElement* const filter = AddTo(bin, MakeElement("capsfilter"));
    GstElement* const encoder = AddTo(bin, MakeElement("x264enc"));
    GstElement* const muxer = AddTo(bin, MakeElement("mp4mux"));
    GstElement* const sink = AddTo(bin, MakeElement("filesink"));
    GstPtr<GstCaps> const given(gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, "BGRx", "width", G_TYPE_INT, static_cast<gint>(size.width), "height",
        G_TYPE_INT, static_cast<gint>(size.height), "framerate", GST_TYPE_FRACTION, numerator, denominator, nullptr));
    // The sampling that every player shows.
    GstPtr<GstCaps> const encoded(gst_caps_from_string("video/x-raw,format=I420"));
    g_object_set(source, "caps", given.get(), "format", GST_FORMAT_TIME, "max-bytes", guint64{0}, nullptr);
    g_object_set(filter, "caps", encoded.get(), nullptr);
    gst_util_set_object_arg(G_OBJECT(encoder), "speed-preset", "veryfast");
    gst_util_set_object_arg(G_OBJECT(encoder), "pass", "qual");
    // Without B-frames the times of a fragment need no correction that only the whole file could hold.
    g_object_set(encoder, "quantizer", 23U, "bframes", 0U, nullptr);
    g_object_set(muxer, "fragment-duration", FragmentMilliseconds, nullptr);
    g_object_set(sink, "location", path.c_str(), "async", FALSE, "buffer-mode", Unbuffered, nullptr);
    gst_element_link_many(source, converter, filter, encoder, muxer, sink, nullptr);
    gst_element_set_state(bin, GST_STATE_PLAYING);
    CheckErrors();
}

void VideoWriter::Impl::Fail(GstMessage* message) const {
    GstFailure const failure(message);
    std::string const reason =
        failure.Is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT) ? "No space left on device" : failure.text;
    throw Error("cannot write '" + path + "': " + reason);
}

void VideoWriter::Impl::CheckErrors() const {
    if (GstPtr<GstMessage> const message = pipeline.TakeMessage(GST_MESSAGE_ERROR)) Fail(message.get());
}

VideoWriter::VideoWriter(std::string const& path, Picture::Size size, double frameRate)
    : impl_(std::make_unique<Impl>(path, size, frameRate)) {}

VideoWriter::~VideoWriter() = default;

void VideoWriter::Write(Picture picture, std::chrono::nanoseconds time) {
    // The source's own way of waiting does not end when the encoder or the disk fails.
    guint64 const limit = QueuedPictures * sizeof(std::uint32_t) * impl_->size.width * impl_->size.height;
    while (gst_app_src_get_current_level_bytes(GST_APP_SRC(impl_->source)) >= limit) {
        impl_->CheckErrors();
        g_usleep(PollTime / GST_USECOND);
    }
    impl_->CheckErrors();
    if (!impl_->anyWritten) impl_->first = time;
    auto const shown = static_cast<GstClockTime>((time - impl_->first).count());
    GstPtr<GstBuffer> buffer = ToBuffer(MakeEven(std::move(picture)));
    GST_BUFFER_PTS(buffer.get()) = shown;
    GST_BUFFER_DURATION(buffer.get()) = impl_->frameTime;
    impl_->anyWritten = true;
    gst_app_src_push_buffer(GST_APP_SRC(impl_->source), buffer.release());
}

void VideoWriter::Finish() {
    if (!impl_->anyWritten) return;
    gst_app_src_end_of_stream(GST_APP_SRC(impl_->source));
    auto const kinds = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS);
    GstPtr<GstMessage> const message = impl_->pipeline.WaitForMessage(kinds);
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) impl_->Fail(message.get());
}

}  // namespace qel::host
