#include "stream.hpp"

#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <pthread.h>

#include "activity.hpp"
#include "backoff.hpp"
#include "memory.hpp"
#include "pace.hpp"
#include "picture_hub.hpp"
#include "result_line.hpp"
#include "run.hpp"
#include "stop_signal.hpp"
#include "stream_calibration.hpp"
#include "stream_frames.hpp"
#include "stream_state.hpp"
#include "text.hpp"

namespace qel::serve {
namespace {

using State = StreamStatus::State;

/// The frames of a stream that has no algorithms are only looked at.
std::vector<media::ColourFormat> const PlainFormats{media::ColourFormat::Nv12};

bool NeedsRestart(StreamSpec const& from, StreamSpec const& to) {
    // Other nodes mean that the stream was removed and added again meanwhile.
    return from.NeedsRestart(to) || from.settings != to.settings;
}

/// After how many frames it is looked whether the calibration's file is another one.
constexpr std::uint64_t FramesToACalibration = 10;

/// The thread's name in the system's tools, which show its first 15 bytes.
void NameThread(std::string const& id) { pthread_setname_np(pthread_self(), ("qel:" + id).substr(0, 15).c_str()); }

/// Gives what a frame shows to a function.
class PublishingSink final : public host::FrameSink {
public:
    using Publish = std::function<void(host::AnalysedFrame const&)>;

    explicit PublishingSink(Publish publish) : publish_(std::move(publish)) {}

    std::string GetStage() const override { return "publish"; }
    void Take(host::AnalysedFrame const& analysed) override { publish_(analysed); }
    void Finish() override {}

private:
    Publish publish_;
};

}  // namespace

struct Stream::Impl {
    Impl(StreamSpec first, StreamParts made, std::shared_ptr<Stream> before)
        : id(first.id),
          parts(std::move(made)),
          spec(std::move(first)),
          state(id, parts.bus),
          hub([metrics = parts.metrics](std::chrono::nanoseconds time) { metrics->NoteTime("draw", time); }),
          backoff(parts.retry.firstWait, parts.retry.longestWait),
          former(std::move(before)),
          thread([this] { Main(); }) {}

    void Main();
    bool Go();
    std::optional<StreamSpec> Begin();
    void Attempt(StreamSpec const& now);
    void Play(StreamSpec const& now);
    void Publish(host::AnalysedFrame const& analysed, std::optional<StreamCalibration> const& calibration);

    std::string const id;
    StreamParts const parts;

    std::mutex mutex;
    StreamSpec spec;
    bool stopping = false;
    /// Set when the thread is to leave off what it does: to stop, or to do what spec says now.
    StopSignal leave;
    StopSignal ended;

    StreamState state;
    Activity activity;
    PictureHub hub;
    StreamFrames frames;
    host::Backoff backoff;
    std::shared_ptr<Stream> former;
    // The last member: all else is there when it begins.
    std::thread thread;
};

void Stream::Impl::Main() {
    if (former) former->impl_->ended.Wait();
    former.reset();
    NameThread(id);
    while (Go()) continue;
    ended.Set();
}

/// One attempt; false at the end of the stream.
bool Stream::Impl::Go() {
    try {
        auto const now = Begin();
        if (now) Attempt(*now);
        return now.has_value();
    } catch (std::exception const&) {
        // There is no memory even to tell of what failed. The thread must not end by it, and with it the process.
        leave.WaitUntil(StopSignal::Clock::now() + parts.retry.firstWait);
        return true;
    }
}

std::optional<StreamSpec> Stream::Impl::Begin() {
    activity.Set(Activity::Kind::Waiting);
    std::lock_guard<std::mutex> const lock(mutex);
    if (stopping) return std::nullopt;
    // What failed before has been changed.
    if (leave.IsSet()) backoff.Reset();
    leave.Clear();
    return spec;
}

/// Plays the stream once, and waits as long as there is to be waited afterwards.
void Stream::Impl::Attempt(StreamSpec const& now) {
    state.SetCalibrated(false);
    if (!now.enabled) {
        hub.Clear();
        state.Tell(State::Disabled);
        return leave.Wait();
    }
    state.TellStill(State::Starting);
    std::string problem;
    try {
        Play(now);
        // It comes back when it was told to leave, or at the end of the source.
        return leave.Wait();
    } catch (std::exception const& error) {
        problem = error.what();
    } catch (...) {
        problem = "it failed for a reason that it does not tell";
    }
    if (leave.IsSet()) return;
    state.Tell(State::Waiting, problem);
    if (!leave.WaitUntil(StopSignal::Clock::now() + backoff.Next())) state.CountRestart();
}

void Stream::Impl::Play(StreamSpec const& now) {
    activity.Set(Activity::Kind::MakingAlgorithms);
    auto const algorithms = now.algorithms.empty() ? nullptr : parts.makeAlgorithms(now);
    if (algorithms) activity.SetAlgorithms(now.algorithms, algorithms->GetPlaceAtWork());
    activity.Set(Activity::Kind::Source);
    std::optional<StreamCalibration> calibration;
    if (!now.calibration.empty()) calibration.emplace(now.calibration);
    state.SetCalibrated(calibration.has_value());
    std::unique_ptr<host::FrameSource> source;
    Pace pace;
    auto const noteSource = [&] {
        if (source) state.NoteSource(source->GetLosses(), pace.GetDelay());
    };
    source = parts.open(
        now, algorithms ? algorithms->GetColourFormats() : PlainFormats, [this] { return leave.IsSet(); },
        [&](host::SourceNews news, std::string const& line) {
            noteSource();
            // When it is back, its next frame tells.
            if (news == host::SourceNews::Lost) state.Tell(State::Waiting, line);
        });
    auto const continued = frames.Continue(*source);
    std::uint64_t played = 0;
    host::RunPlan plan{
        .source = *continued,
        .analyse =
            [&](host::FrameSource::Frame const& frame, algorithm::video::Result& result) {
                activity.Set(Activity::Kind::Algorithms);
                auto const shown = algorithms ? algorithms->Process(frame, result) : frame;
                if (!calibration) return shown;
                if (played % FramesToACalibration == 0) calibration->Refresh();
                calibration->Measure(result, frame.GetSize());
                return shown;
            },
        .sinks = {},
        .progress =
            [&](std::uint64_t) {
                activity.Set(Activity::Kind::Source);
                noteSource();
                if (++played == parts.retry.goodFrames) backoff.Reset();
            },
        .startAnew =
            [&] {
                activity.Set(Activity::Kind::Algorithms);
                if (algorithms) algorithms->Reset();
                host::ReleaseFreeMemory();
            },
        .pace =
            [&](host::FrameSource::Frame const& frame) {
                if (source->IsLive()) return !leave.IsSet();
                activity.Set(Activity::Kind::Waiting);
                return !leave.WaitUntil(pace.GetDue(frame.GetTimestamp().time_since_epoch(), StopSignal::Clock::now()));
            },
        .timed = [&](std::string const& stage, std::chrono::nanoseconds time) { parts.metrics->NoteTime(stage, time); },
        .firstIndex = state.GetFrames(),
    };
    plan.sinks.push_back(
        std::make_unique<PublishingSink>([&](host::AnalysedFrame const& analysed) { Publish(analysed, calibration); }));
    host::RunReport const report = host::Run(plan);
    activity.Set(Activity::Kind::Source);
    noteSource();
    state.EndSource();
    if (report.error) std::rethrow_exception(report.error);
    if (!leave.IsSet()) state.Tell(State::Ended, source->GetWarning().value_or(std::string()));
}

void Stream::Impl::Publish(host::AnalysedFrame const& analysed, std::optional<StreamCalibration> const& calibration) {
    activity.Set(Activity::Kind::Publishing);
    std::string line = host::MakeResultLine(id, analysed);
    line.pop_back();
    parts.bus.Publish({.kind = "detection", .stream = id, .data = std::move(line)});
    auto const& objects = analysed.result.objects;
    parts.metrics->CountFrame(objects.size());
    Scene scene{.frame = analysed.frame, .objects = objects};
    if (calibration) scene.mounting = calibration->GetMounting();
    hub.Show(std::move(scene));
    // Last: who sees the frame counted finds all else of it.
    state.CountFrame(analysed.frame, objects.size());
}

Stream::Stream(StreamSpec spec, StreamParts parts, std::shared_ptr<Stream> former)
    : impl_(std::make_unique<Impl>(std::move(spec), std::move(parts), std::move(former))) {}

Stream::~Stream() {
    RequestStop();
    impl_->thread.join();
}

void Stream::Follow(StreamSpec spec) {
    std::lock_guard<std::mutex> const lock(impl_->mutex);
    bool const anew = NeedsRestart(impl_->spec, spec);
    impl_->spec = std::move(spec);
    if (anew) impl_->leave.Set();
}

void Stream::RequestStop() {
    {
        std::lock_guard<std::mutex> const lock(impl_->mutex);
        impl_->stopping = true;
        impl_->leave.Set();
    }
    impl_->hub.Close();
}

bool Stream::HasEnded() const { return impl_->ended.IsSet(); }

bool Stream::WaitForEnd(std::chrono::steady_clock::time_point deadline) const {
    return impl_->ended.WaitUntil(deadline);
}

std::string Stream::DescribeActivity() const { return impl_->activity.Describe(); }

StreamStatus Stream::GetStatus() const { return impl_->state.Get(); }

std::shared_ptr<Viewer> Stream::Look(LookOptions const& options, std::function<void()> wake) {
    return impl_->hub.Look(options, std::move(wake));
}

void Stream::LookAfter() {
    // Asked first: a frame that is done meanwhile says that nothing hangs.
    std::uint64_t const frames = impl_->state.GetFrames();
    if (!impl_->activity.IsHanging(impl_->parts.patience)) return;
    std::chrono::duration<double> const time = impl_->parts.patience;
    std::string const seconds = host::FormatNumber(time.count(), time < std::chrono::seconds(1) ? 1 : 0);
    impl_->state.TellOfHanging(frames, impl_->activity.Describe() + " for more than " + seconds + " seconds");
}

void Stream::RefreshMetrics() const {
    impl_->parts.metrics->NoteStatus(impl_->state.Get(), impl_->frames.GetHeld(), impl_->hub.GetViewers(),
                                     impl_->state.GetDelay());
}

}  // namespace qel::serve
