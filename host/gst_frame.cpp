#include "gst_frame.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <utility>

#include "error.hpp"

namespace qel::host {
namespace {

using Frame = media::video::FrameBase<void const>;

struct FormatRow {
    media::ColourFormat ours;
    GstVideoFormat theirs;
    char const* name;
};

constexpr std::array<FormatRow, 5> Formats{{
    {media::ColourFormat::Grey8, GST_VIDEO_FORMAT_GRAY8, "GRAY8"},
    {media::ColourFormat::Rgb24, GST_VIDEO_FORMAT_RGB, "RGB"},
    {media::ColourFormat::Bgr24, GST_VIDEO_FORMAT_BGR, "BGR"},
    {media::ColourFormat::Yuv24, GST_VIDEO_FORMAT_v308, "v308"},
    {media::ColourFormat::Nv12, GST_VIDEO_FORMAT_NV12, "NV12"},
}};

std::optional<media::ColourFormat> FromGstFormat(GstVideoFormat format) noexcept {
    for (FormatRow const& row : Formats) {
        if (row.theirs == format) return row.ours;
    }
    return std::nullopt;
}

/// A mapped buffer and the number of frames that share it.
struct Mapping {
    GstVideoFrame video{};
    std::atomic<unsigned int> references{0};

    Mapping() = default;
    Mapping(Mapping const&) = delete;
    Mapping& operator=(Mapping const&) = delete;
    ~Mapping() {
        if (video.buffer != nullptr) gst_video_frame_unmap(&video);
    }
};

/// The bytes from a plane's first to the end of the memory that is mapped around it.
std::uint64_t BytesBehind(GstVideoFrame const& video, void const* first) noexcept {
    auto const* const data = static_cast<guint8 const*>(first);
    for (GstMapInfo const& map : video.map) {
        if (map.data != nullptr && data >= map.data && data < map.data + map.size) {
            return static_cast<std::uint64_t>(map.data + map.size - data);
        }
    }
    return 0;
}

Frame::Planes DescribePlanes(GstVideoFrame const& video) {
    Frame::Planes planes{};
    unsigned int const count = std::min<unsigned int>(video.info.finfo->n_planes, Frame::MaxPlanes);
    for (unsigned int i = 0; i < count; ++i) {
        auto const stride = static_cast<std::int64_t>(video.info.stride[i]);
        // The first component of a plane has the number of the plane in all of our formats.
        auto const rows = static_cast<std::uint64_t>(GST_VIDEO_FRAME_COMP_HEIGHT(&video, i));
        // The last row of a buffer may end with its last pixel.
        std::uint64_t const size =
            std::min(rows * static_cast<std::uint64_t>(stride), BytesBehind(video, video.data[i]));
        planes[i] = media::video::frame::PlaneBase<void const>(size, video.data[i], stride);
    }
    return planes;
}

}  // namespace

char const* ToGstFormat(media::ColourFormat format) noexcept {
    for (FormatRow const& row : Formats) {
        if (row.ours == format) return row.name;
    }
    return nullptr;
}

Frame WrapBuffer(GstBuffer* buffer, GstVideoInfo const& info, media::TimePoint timestamp,
                 media::video::frame::Rotation rotation) {
    auto const format = FromGstFormat(GST_VIDEO_INFO_FORMAT(&info));
    if (!format) {
        throw Error(std::string("frames come in an unexpected format: ") +
                    gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&info)));
    }
    auto mapping = std::make_unique<Mapping>();
    if (gst_video_frame_map(&mapping->video, &info, buffer, GST_MAP_READ) == FALSE) {
        throw Error("a frame is smaller than its description says, or its memory cannot be read");
    }
    Mapping* const shared = mapping.get();
    Frame frame(
        DescribePlanes(shared->video), *format, static_cast<unsigned int>(GST_VIDEO_INFO_WIDTH(&info)),
        static_cast<unsigned int>(GST_VIDEO_INFO_HEIGHT(&info)), timestamp, rotation,
        [shared] { shared->references.fetch_add(1, std::memory_order_relaxed); },
        [shared] {
            if (shared->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete shared;
        });
    (void)mapping.release();  // from here on the frame's callbacks own it
    return frame;
}

}  // namespace qel::host
