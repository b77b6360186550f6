#include "gst_frame.hpp"

#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "error.hpp"

namespace qel::host {
namespace {

using Frame = media::video::FrameBase<void const>;
using media::ColourFormat;
using media::video::frame::Rotation;

GstVideoInfo InfoOf(GstVideoFormat format, unsigned int width, unsigned int height) {
    InitialiseGStreamer();
    GstVideoInfo info;
    gst_video_info_set_format(&info, format, width, height);
    return info;
}

/// A buffer over memory of the test's own, which counts how often it is given back.
struct OwnBuffer {
    explicit OwnBuffer(std::size_t size) : pixels(size) {
        for (std::size_t i = 0; i < size; ++i) pixels[i] = static_cast<std::uint8_t>(i * 7);
        buffer.reset(gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, pixels.data(), size, 0, size, &released,
                                                 [](gpointer count) { ++*static_cast<std::atomic<int>*>(count); }));
    }

    std::vector<std::uint8_t> pixels;
    std::atomic<int> released{0};
    GstPtr<GstBuffer> buffer;
};

Frame Wrap(OwnBuffer& own, GstVideoInfo const& info) {
    return WrapBuffer(own.buffer.get(), info, media::TimePoint(std::chrono::nanoseconds(42)), Rotation::Clockwise90);
}

TEST(WrapBuffer, PointsIntoTheMemoryOfTheBuffer) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_GRAY8, 5, 3);
    OwnBuffer own(info.size);
    Frame const frame = Wrap(own, info);
    EXPECT_EQ(frame.GetPlane(0).GetBuffer(), own.pixels.data());
    EXPECT_EQ(frame.GetPlane(0).GetStride(), 8);
    EXPECT_EQ(frame.GetPlane(0).GetSize(), 24U);
    EXPECT_FALSE(frame.GetPlane(1));
    EXPECT_EQ(frame.GetColourFormat(), ColourFormat::Grey8);
    EXPECT_EQ(frame.GetWidth(), 5U);
    EXPECT_EQ(frame.GetHeight(), 3U);
    EXPECT_EQ(frame.GetTimestamp().time_since_epoch().count(), 42);
    EXPECT_EQ(frame.GetRotation(), Rotation::Clockwise90);
}

TEST(WrapBuffer, LaysOutEachFormatAsAllocatedFramesAre) {
    struct Case {
        GstVideoFormat theirs;
        ColourFormat ours;
    };
    constexpr Case Cases[] = {
        {GST_VIDEO_FORMAT_GRAY8, ColourFormat::Grey8}, {GST_VIDEO_FORMAT_RGB, ColourFormat::Rgb24},
        {GST_VIDEO_FORMAT_BGR, ColourFormat::Bgr24},   {GST_VIDEO_FORMAT_v308, ColourFormat::Yuv24},
        {GST_VIDEO_FORMAT_NV12, ColourFormat::Nv12},
    };
    for (Case const& c : Cases) {
        for (auto const& [width, height] : {std::pair{64U, 48U}, std::pair{7U, 5U}, std::pair{1U, 1U}}) {
            SCOPED_TRACE(gst_video_format_to_string(c.theirs));
            SCOPED_TRACE(width);
            GstVideoInfo const info = InfoOf(c.theirs, width, height);
            OwnBuffer own(info.size);
            Frame const frame = Wrap(own, info);
            Frame const allocated(c.ours, width, height, {}, {});
            EXPECT_STREQ(ToGstFormat(c.ours), gst_video_format_to_string(c.theirs));
            EXPECT_EQ(frame.GetColourFormat(), c.ours);
            for (std::size_t i = 0; i < Frame::MaxPlanes; ++i) {
                EXPECT_EQ(frame.GetPlane(i).GetStride(), allocated.GetPlane(i).GetStride());
                EXPECT_EQ(frame.GetPlane(i).GetSize(), allocated.GetPlane(i).GetSize());
            }
            auto const* const second = static_cast<std::uint8_t const*>(frame.GetPlane(1).GetBuffer());
            if (c.ours == ColourFormat::Nv12) {
                // GStreamer gives the first plane an even number of rows.
                EXPECT_EQ(second, own.pixels.data() + frame.GetPlane(0).GetStride() * ((height + 1) / 2 * 2));
            }
        }
    }
}

TEST(WrapBuffer, FollowsTheLayoutThatTheBufferItselfDescribes) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_NV12, 6, 4);
    OwnBuffer own(400);
    GstPtr<GstBuffer> const described(gst_buffer_copy(own.buffer.get()));
    gsize offsets[GST_VIDEO_MAX_PLANES] = {20, 200};
    gint strides[GST_VIDEO_MAX_PLANES] = {32, 16};
    gst_buffer_add_video_meta_full(described.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, 6, 4, 2, offsets,
                                   strides);
    Frame const frame = WrapBuffer(described.get(), info, {}, {});
    EXPECT_EQ(frame.GetPlane(0).GetBuffer(), own.pixels.data() + 20);
    EXPECT_EQ(frame.GetPlane(0).GetStride(), 32);
    EXPECT_EQ(frame.GetPlane(0).GetSize(), 128U);
    EXPECT_EQ(frame.GetPlane(1).GetBuffer(), own.pixels.data() + 200);
    EXPECT_EQ(frame.GetPlane(1).GetStride(), 16);
    EXPECT_EQ(frame.GetPlane(1).GetSize(), 32U);
}

TEST(WrapBuffer, NeverClaimsBytesBeyondTheMemory) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_GRAY8, 6, 4);
    OwnBuffer own(3 * 32 + 6);
    GstPtr<GstBuffer> const described(gst_buffer_copy(own.buffer.get()));
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0};
    gint strides[GST_VIDEO_MAX_PLANES] = {32};
    gst_buffer_add_video_meta_full(described.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_GRAY8, 6, 4, 1, offsets,
                                   strides);
    Frame const frame = WrapBuffer(described.get(), info, {}, {});
    EXPECT_EQ(frame.GetPlane(0).GetStride(), 32);
    EXPECT_EQ(frame.GetPlane(0).GetSize(), own.pixels.size());
}

TEST(WrapBuffer, HoldsTheBufferUntilTheLastFrameThatSharesItIsGone) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_GRAY8, 8, 8);
    OwnBuffer own(info.size);
    std::optional<Frame> first = Wrap(own, info);
    own.buffer.reset();
    std::optional<Frame> second = *first;
    std::optional<Frame> third = std::move(*first);
    first.reset();
    EXPECT_EQ(own.released, 0);
    third.reset();
    EXPECT_EQ(own.released, 0);
    EXPECT_EQ(static_cast<std::uint8_t const*>(second->GetPlane(0).GetBuffer())[9], 63);
    second.reset();
    EXPECT_EQ(own.released, 1);
}

TEST(WrapBuffer, LetsThreadsShareAndDropAFrame) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_GRAY8, 8, 8);
    OwnBuffer own(info.size);
    {
        Frame const frame = Wrap(own, info);
        own.buffer.reset();
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([copy = frame] {
                for (int round = 0; round < 1000; ++round) {
                    Frame const again = copy;
                    EXPECT_EQ(static_cast<std::uint8_t const*>(again.GetPlane(0).GetBuffer())[1], 7);
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(own.released, 0);
    }
    EXPECT_EQ(own.released, 1);
}

TEST(WrapBuffer, RefusesABufferThatIsSmallerThanItsDescription) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_GRAY8, 8, 8);
    OwnBuffer own(info.size - 1);
    EXPECT_THROW((void)Wrap(own, info), Error);
    own.buffer.reset();
    EXPECT_EQ(own.released, 1);
}

TEST(WrapBuffer, RefusesAFormatThatFramesDoNotHave) {
    GstVideoInfo const info = InfoOf(GST_VIDEO_FORMAT_YUY2, 8, 8);
    OwnBuffer own(info.size);
    EXPECT_THROW((void)Wrap(own, info), Error);
}

TEST(ToGstFormat, HasNoNameForAValueOutsideTheFormats) {
    EXPECT_EQ(ToGstFormat(static_cast<ColourFormat>(5)), nullptr);
    EXPECT_EQ(ToGstFormat(static_cast<ColourFormat>(-1)), nullptr);
}

}  // namespace
}  // namespace qel::host
