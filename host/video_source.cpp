#include "video_source.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <gst/app/gstappsink.h>

#include "container_check.hpp"
#include "error.hpp"
#include "gst_frame.hpp"
#include "gstreamer.hpp"
#include "source_failure.hpp"
#include "text.hpp"
#include "timeline.hpp"

namespace qel::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr guint QueuedFrames = 4;
/// Of a live source, whose frames come in bursts.
constexpr guint QueuedLiveFrames = 8;
constexpr GstClockTime PollTime = 50 * GST_MSECOND;
/// How many polls without a frame are waited for, after an error, for frames that were under way when it struck.
constexpr int PatienceAfterError = 40;
constexpr int PatienceAfterLoss = 4;
/// How many polls a file may be read by nobody. Some demuxers give a broken file up without a word.
constexpr int PatienceWithRest = 20;
/// How long a stream has at least for its first frame: to be reached, and to come to a picture that needs no other.
constexpr std::chrono::nanoseconds LeastOpening = std::chrono::seconds(10);
/// By how much the video may end before the longest stream of its file does.
constexpr std::chrono::milliseconds LeastShortfall{1000};

GstPtr<GstCaps> WantedCaps(std::vector<media::ColourFormat> const& formats) {
    // GStreamer converts anything into the first; offered a list, it would choose what costs it least instead.
    for (media::ColourFormat const format : formats) {
        if (char const* const name = ToGstFormat(format)) {
            return GstPtr<GstCaps>(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, name, nullptr));
        }
    }
    throw Error("the algorithm accepts no colour format that frames can be given in");
}

/// Links a decoded stream to the converter: the first one that is a video, the only kind that is exposed.
void LinkDecoded(GstElement*, GstPad* pad, gpointer converter) {
    GstPtr<GstPad> const target(gst_element_get_static_pad(static_cast<GstElement*>(converter), "sink"));
    if (gst_pad_is_linked(target.get()) == FALSE) gst_pad_link(pad, target.get());
}

/// Numbers the frames that reach the queue, so that those which are dropped there can be told by their absence.
GstPadProbeReturn NumberFrame(GstPad*, GstPadProbeInfo* info, gpointer count) {
    GstBuffer* const buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    GST_BUFFER_OFFSET(buffer) = (*static_cast<guint64*>(count))++;
    info->data = buffer;
    return GST_PAD_PROBE_OK;
}

}  // namespace

struct VideoSource::Impl {
    Impl(Location place, std::vector<media::ColourFormat> const& formats, std::function<bool()> stopQuestion,
         std::chrono::nanoseconds longestSilence);

    std::optional<Frame> Pull();
    Frame Wrap(GstSample* sample);
    media::TimePoint TimeOf(GstSample* sample);
    void Play();
    void CountDropped(GstBuffer* buffer);
    void TakeMessages();
    void CheckSilence(Clock::time_point since) const;
    [[noreturn]] void Fail() const;
    void AtEnd();
    bool FramesUnderWay() const;
    void LearnLength();

    Location location;
    std::function<bool()> stop;
    std::chrono::nanoseconds silence;
    bool isStream;
    bool isLive = false;
    SourceFailure failure;
    /// Frames that have reached the queue; counted on the thread that decodes, which goes with the pipeline.
    guint64 arrived = 0;
    Pipeline pipeline{"qel-source"};
    GstElement* sink = nullptr;

    GstPtr<GstCaps> caps;
    GstVideoInfo info{};
    std::chrono::nanoseconds lastTime{0};
    Timeline timeline;
    std::uint64_t frames = 0;
    std::uint64_t dropped = 0;
    bool ended = false;
    std::optional<Frame> first;
    geometry::Dimension<unsigned int, 2> firstSize;
    std::optional<std::uint64_t> expectedFrames;
    std::chrono::nanoseconds duration{0};
    bool readToEnd = false;
    double frameRate = 0;
};

VideoSource::Impl::Impl(Location place, std::vector<media::ColourFormat> const& formats,
                        std::function<bool()> stopQuestion, std::chrono::nanoseconds longestSilence)
    : location(std::move(place)),
      stop(std::move(stopQuestion)),
      silence(longestSilence),
      isStream(IsStream(location)),
      failure(location) {
    GstPtr<GstCaps> const wanted = WantedCaps(formats);
    GstElement* const bin = pipeline.Get();
    GstElement* const decoder = AddTo(bin, MakeElement("uridecodebin"));
    GstElement* const converter = AddTo(bin, MakeElement("videoconvert"));
    sink = AddTo(bin, MakeElement("appsink"));
    // Only video is decoded; the other streams of the file stay packed.
    GstPtr<GstCaps> const exposed(gst_caps_from_string("video/x-raw(ANY)"));
    g_object_set(decoder, "uri", location.uri.c_str(), "caps", exposed.get(), "expose-all-streams", FALSE, nullptr);
    g_object_set(sink, "caps", wanted.get(), "sync", FALSE, "max-buffers", QueuedFrames, "enable-last-sample", FALSE,
                 nullptr);
    gst_element_link(converter, sink);
    g_signal_connect(decoder, "pad-added", G_CALLBACK(LinkDecoded), converter);
    Play();
    first = Pull();
    if (first) firstSize = first->GetSize();
    LearnLength();
}

void VideoSource::Impl::Play() {
    if (gst_element_set_state(pipeline.Get(), GST_STATE_PAUSED) == GST_STATE_CHANGE_NO_PREROLL) {
        isLive = true;
        // Nobody can have a live source wait: its packets would pile up in memory.
        GstPtr<GstPad> const pad(gst_element_get_static_pad(sink, "sink"));
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, NumberFrame, &arrived, nullptr);
        g_object_set(sink, "drop", TRUE, "max-buffers", QueuedLiveFrames, nullptr);
    }
    gst_element_set_state(pipeline.Get(), GST_STATE_PLAYING);
}

void VideoSource::Impl::TakeMessages() {
    auto const kinds = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_WARNING | GST_MESSAGE_ELEMENT);
    while (GstPtr<GstMessage> const message = pipeline.TakeMessage(kinds)) failure.Note(message.get());
}

bool VideoSource::Impl::FramesUnderWay() const {
    GstPtr<GstPad> const pad(gst_element_get_static_pad(sink, "sink"));
    return gst_pad_has_current_caps(pad.get()) != FALSE;
}

std::optional<VideoSource::Frame> VideoSource::Impl::Pull() {
    auto const start = Clock::now();
    int patience = isStream ? PatienceAfterLoss : PatienceAfterError;
    int rest = PatienceWithRest;
    while (!ended) {
        if (stop && stop()) break;
        GstPtr<GstSample> const sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink), PollTime));
        if (sample) return Wrap(sample.get());
        if (gst_app_sink_is_eos(GST_APP_SINK(sink)) != FALSE) {
            AtEnd();
            break;
        }
        TakeMessages();
        if (failure && (!FramesUnderWay() || --patience == 0)) Fail();
        rest = location.file && !pipeline.IsAtWork() ? rest - 1 : PatienceWithRest;
        if (rest == 0) Fail();
        CheckSilence(start);
    }
    ended = true;
    return std::nullopt;
}

void VideoSource::Impl::CheckSilence(Clock::time_point since) const {
    auto const limit = frames == 0 ? std::max(silence, LeastOpening) : silence;
    if (!isStream || silence <= silence.zero() || Clock::now() - since < limit) return;
    throw LostError("'" + location.name + "' fell silent: no frame for " +
                        FormatNumber(std::chrono::duration<double>(limit).count(), 1) + " s after " +
                        std::to_string(frames) + (frames == 1 ? " frame" : " frames"),
                    true);
}

void VideoSource::Impl::Fail() const {
    std::uint64_t const missing = location.file ? CountMissingBytes(*location.file) : 0;
    std::string const text = failure.Describe(frames, missing);
    if (isStream && failure.MayPass()) throw LostError(text);
    throw Error(text);
}

void VideoSource::Impl::AtEnd() {
    ended = true;
    TakeMessages();
    if (failure || failure.IsDisconnected()) Fail();
    std::uint64_t const missing = location.file ? CountMissingBytes(*location.file) : 0;
    if (missing != 0) throw Error(DescribeCutShort(location.name, frames, missing));
    if (frames == 0) throw Error("'" + location.name + "' holds no video frames");
    readToEnd = true;
}

VideoSource::Frame VideoSource::Impl::Wrap(GstSample* sample) {
    GstCaps* const current = gst_sample_get_caps(sample);
    if (current != caps.get()) {
        if (current == nullptr || gst_video_info_from_caps(&info, current) == FALSE) {
            throw Error("'" + location.name + "' gives frames without a description");
        }
        caps.reset(gst_caps_ref(current));
    }
    if (frames == 0) failure.ForgetDisconnections();
    CountDropped(gst_sample_get_buffer(sample));
    Frame frame = WrapBuffer(gst_sample_get_buffer(sample), info, TimeOf(sample), media::video::frame::Rotation::None);
    ++frames;
    return frame;
}

media::TimePoint VideoSource::Impl::TimeOf(GstSample* sample) {
    GstBuffer* const buffer = gst_sample_get_buffer(sample);
    if (GST_BUFFER_PTS_IS_VALID(buffer)) {
        // The time since the start of the video, wherever the container lets its clock begin.
        guint64 const time =
            gst_segment_to_stream_time(gst_sample_get_segment(sample), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
        lastTime = std::chrono::nanoseconds(GST_CLOCK_TIME_IS_VALID(time) ? time : GST_BUFFER_PTS(buffer));
    } else if (frames != 0 && info.fps_n > 0) {
        lastTime += std::chrono::nanoseconds(gst_util_uint64_scale_int(GST_SECOND, info.fps_d, info.fps_n));
    }
    return media::TimePoint(isStream ? timeline.Place(lastTime) : lastTime);
}

void VideoSource::Impl::CountDropped(GstBuffer* buffer) {
    // Only the frames of a live source are numbered.
    if (isLive) dropped = GST_BUFFER_OFFSET(buffer) - frames;
}

void VideoSource::Impl::LearnLength() {
    if (info.fps_n <= 0 || info.fps_d <= 0) return;
    frameRate = static_cast<double>(info.fps_n) / info.fps_d;
    gint64 length = 0;
    if (gst_element_query_duration(pipeline.Get(), GST_FORMAT_TIME, &length) == FALSE || length <= 0) return;
    duration = std::chrono::nanoseconds(length);
    auto const count = std::llround(static_cast<double>(length) / GST_SECOND * frameRate);
    if (count > 0) expectedFrames = static_cast<std::uint64_t>(count);
}

VideoSource::VideoSource(Location location, std::vector<media::ColourFormat> const& formats, std::function<bool()> stop,
                         std::chrono::nanoseconds silence)
    : impl_(std::make_unique<Impl>(std::move(location), formats, std::move(stop), silence)) {}

VideoSource::~VideoSource() = default;

Losses VideoSource::GetLosses() const {
    Losses losses;
    losses.droppedFrames = impl_->dropped;
    return losses;
}

std::optional<VideoSource::Frame> VideoSource::Read() {
    if (impl_->first) return std::exchange(impl_->first, std::nullopt);
    return impl_->Pull();
}

std::optional<std::string> VideoSource::GetWarning() const {
    auto const end = impl_->lastTime + std::chrono::nanoseconds(std::llround(1e9 / std::max(impl_->frameRate, 1.0)));
    if (!impl_->readToEnd || !impl_->location.file || impl_->duration - end < LeastShortfall) return std::nullopt;
    return "'" + impl_->location.name + "' ends at " + FormatTime(end, 1) + ", but its headers promise " +
           FormatTime(impl_->duration, 1) + ": it may be damaged";
}

Location const& VideoSource::GetLocation() const noexcept { return impl_->location; }
geometry::Dimension<unsigned int, 2> VideoSource::GetFrameSize() const noexcept { return impl_->firstSize; }
std::optional<std::uint64_t> VideoSource::GetExpectedFrames() const noexcept { return impl_->expectedFrames; }
double VideoSource::GetFrameRate() const noexcept { return impl_->frameRate; }
bool VideoSource::IsLive() const noexcept { return impl_->isLive; }

}  // namespace qel::host
