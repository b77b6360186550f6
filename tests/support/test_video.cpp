#include "support/test_video.hpp"

#include <stdexcept>

#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include "gstreamer.hpp"

namespace qel::test {
namespace {

using host::GstPtr;

GstPtr<GstBuffer> PaintFrame(GstVideoInfo const& info, unsigned int index, std::function<void(Canvas&)> const& paint) {
    GstPtr<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr));
    gst_buffer_memset(buffer.get(), 0, 0, info.size);
    GstVideoFrame frame;
    if (gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE) == FALSE) throw std::runtime_error("map");
    Canvas canvas{index, {}, {}};
    for (unsigned int i = 0; i < info.finfo->n_planes; ++i) {
        canvas.planes.push_back(static_cast<std::uint8_t*>(frame.data[i]));
        canvas.strides.push_back(static_cast<std::size_t>(info.stride[i]));
    }
    paint(canvas);
    gst_video_frame_unmap(&frame);
    return buffer;
}

}  // namespace

void WriteTestVideo(std::string const& path, TestVideo const& video, std::function<void(Canvas&)> const& paint) {
    host::InitialiseGStreamer();
    std::string const description = "appsrc name=source format=time ! " + video.encoder + " ! filesink name=sink";
    GError* raw = nullptr;
    GstPtr<GstElement> const pipeline(GST_ELEMENT(gst_object_ref_sink(gst_parse_launch(description.c_str(), &raw))));
    if (GstPtr<GError> const error(raw); error) throw std::runtime_error(error->message);
    GstPtr<GstElement> const source(gst_bin_get_by_name(GST_BIN(pipeline.get()), "source"));
    GstPtr<GstElement> const sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    GstVideoInfo info;
    gst_video_info_set_format(&info, gst_video_format_from_string(video.format.c_str()), video.width, video.height);
    info.fps_n = static_cast<gint>(video.framesPerSecond);
    info.fps_d = 1;
    GstPtr<GstCaps> const caps(gst_video_info_to_caps(&info));
    g_object_set(source.get(), "caps", caps.get(), nullptr);
    g_object_set(sink.get(), "location", path.c_str(), nullptr);
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    for (unsigned int i = 0; i < video.frames; ++i) {
        GstPtr<GstBuffer> buffer = PaintFrame(info, i, paint);
        GST_BUFFER_PTS(buffer.get()) = gst_util_uint64_scale(i, GST_SECOND, video.framesPerSecond);
        GST_BUFFER_DURATION(buffer.get()) = GST_SECOND / video.framesPerSecond;
        gst_app_src_push_buffer(GST_APP_SRC(source.get()), buffer.release());
    }
    gst_app_src_end_of_stream(GST_APP_SRC(source.get()));
    GstPtr<GstBus> const bus(gst_element_get_bus(pipeline.get()));
    auto const kinds = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS);
    GstPtr<GstMessage> const message(gst_bus_timed_pop_filtered(bus.get(), GST_CLOCK_TIME_NONE, kinds));
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
        throw std::runtime_error("cannot make " + path + ": " + host::GstFailure(message.get()).text);
    }
}

void FillBgr(Canvas& canvas, unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, std::uint8_t blue,
             std::uint8_t green, std::uint8_t red) {
    for (std::size_t y = y0; y < y1; ++y) {
        for (std::size_t x = x0; x < x1; ++x) {
            std::uint8_t* const pixel = canvas.planes[0] + y * canvas.strides[0] + 3 * x;
            pixel[0] = blue;
            pixel[1] = green;
            pixel[2] = red;
        }
    }
}

void FillGrey(Canvas& canvas, unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, std::uint8_t level) {
    for (std::size_t y = y0; y < y1; ++y) {
        for (std::size_t x = x0; x < x1; ++x) canvas.planes[0][y * canvas.strides[0] + x] = level;
    }
}

void WriteMovingSquare(std::string const& path, TestVideo video) {
    if (video.height < 16) throw std::invalid_argument("WriteMovingSquare needs frames of at least 16 rows");
    video.format = "GRAY8";
    WriteTestVideo(path, video, [&video](Canvas& canvas) {
        FillGrey(canvas, 0, 0, video.width, video.height, 50);
        unsigned int const x = 2 * canvas.index;
        FillGrey(canvas, x, 8, x + 8, 16, 220);
    });
}

}  // namespace qel::test
