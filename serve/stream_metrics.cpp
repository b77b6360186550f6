#include "stream_metrics.hpp"

#include <map>
#include <mutex>
#include <utility>

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>

namespace qel::serve {
namespace {

using prometheus::Counter;
using prometheus::Gauge;
using prometheus::Histogram;
using prometheus::Labels;
using prometheus::Registry;

/// From a quick algorithm on a small frame to a source that is about to be given up.
Histogram::BucketBoundaries const Seconds{0.0005, 0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10};

/// One series, which leaves the registry with the object.
template <class Metric>
class Series {
public:
    template <class... Arguments>
    Series(prometheus::Family<Metric>& family, Labels const& labels, Arguments const&... arguments)
        : family_(family), metric_(family.Add(labels, arguments...)) {}
    Series(Series const&) = delete;
    Series& operator=(Series const&) = delete;
    ~Series() { family_.Remove(&metric_); }

    Metric* operator->() const noexcept { return &metric_; }

private:
    prometheus::Family<Metric>& family_;
    Metric& metric_;
};

auto& CounterFamily(Registry& registry, char const* name, char const* help) {
    return prometheus::BuildCounter().Name(name).Help(help).Register(registry);
}

auto& GaugeFamily(Registry& registry, char const* name, char const* help) {
    return prometheus::BuildGauge().Name(name).Help(help).Register(registry);
}

/// A counter of what somebody else counts.
void RaiseTo(Series<Counter> const& counter, double value) {
    double const more = value - counter->Value();
    if (more > 0) counter->Increment(more);
}

double ToSeconds(std::chrono::nanoseconds time) { return std::chrono::duration<double>(time).count(); }

}  // namespace

struct StreamMetrics::Impl {
    Impl(Registry& registry, std::string const& id);

    Labels const labels;
    Series<Counter> frames, objects, dropped, interruptions, stalls, reconnects, restarts, away, delay;
    Series<Gauge> running, rate, held, viewers;
    /// By the name of the stage.
    std::map<std::string, Series<Histogram>> stages;
    // Counters follow what the status says; two threads may tell it at a time.
    std::mutex mutex;
};

StreamMetrics::Impl::Impl(Registry& registry, std::string const& id)
    : labels{{"stream", id}},
      frames(CounterFamily(registry, "qel_stream_frames_total", "Frames that were analysed"), labels),
      objects(CounterFamily(registry, "qel_stream_objects_total", "Objects that were found"), labels),
      dropped(CounterFamily(registry, "qel_stream_dropped_frames_total",
                            "Frames of a live source that were given up because the algorithms were too slow"),
              labels),
      interruptions(CounterFamily(registry, "qel_stream_interruptions_total", "How often a source was lost"), labels),
      stalls(CounterFamily(registry, "qel_stream_stalls_total", "How often a source was lost because it fell silent"),
             labels),
      reconnects(CounterFamily(registry, "qel_stream_reconnects_total", "How often a lost source came back"), labels),
      restarts(
          CounterFamily(registry, "qel_stream_restarts_total", "How often a stream was started again as it failed"),
          labels),
      away(CounterFamily(registry, "qel_stream_away_seconds_total", "For how long a source was lost, over all times"),
           labels),
      delay(CounterFamily(registry, "qel_stream_delay_seconds_total",
                          "By how much the playing of a recording has fallen behind its own pace"),
            labels),
      running(GaugeFamily(registry, "qel_stream_running", "1 while a stream has frames, 0 otherwise"), labels),
      rate(GaugeFamily(registry, "qel_stream_frames_per_second", "Frames a second over the last three seconds"),
           labels),
      held(GaugeFamily(registry, "qel_stream_live_frames", "Decoded frames that are held in memory"), labels),
      viewers(GaugeFamily(registry, "qel_stream_viewers", "How many look at the stream's picture"), labels) {
    auto& family = prometheus::BuildHistogram()
                       .Name("qel_stream_stage_seconds")
                       .Help("Time that a frame takes in a stage; \"decode\" is the wait for the next frame")
                       .Register(registry);
    for (std::string const stage : {"decode", "algorithm", "publish", "draw"}) {
        stages.try_emplace(stage, family, Labels{{"stream", id}, {"stage", stage}}, Seconds);
    }
}

StreamMetrics::StreamMetrics(Registry& registry, std::string const& id) : impl_(std::make_unique<Impl>(registry, id)) {}

StreamMetrics::~StreamMetrics() = default;

void StreamMetrics::CountFrame(std::size_t objects) {
    impl_->frames->Increment();
    impl_->objects->Increment(static_cast<double>(objects));
}

void StreamMetrics::NoteTime(std::string const& stage, std::chrono::nanoseconds time) {
    auto const found = impl_->stages.find(stage);
    if (found != impl_->stages.end()) found->second->Observe(ToSeconds(time));
}

void StreamMetrics::NoteStatus(StreamStatus const& status, std::int64_t frames, std::size_t viewers,
                               std::chrono::nanoseconds delay) {
    std::lock_guard<std::mutex> const lock(impl_->mutex);
    host::Losses const& losses = status.losses;
    RaiseTo(impl_->dropped, static_cast<double>(losses.droppedFrames));
    RaiseTo(impl_->interruptions, static_cast<double>(losses.interruptions));
    RaiseTo(impl_->stalls, static_cast<double>(losses.stalls));
    RaiseTo(impl_->reconnects, static_cast<double>(losses.returns));
    RaiseTo(impl_->restarts, static_cast<double>(status.restarts));
    RaiseTo(impl_->away, ToSeconds(losses.away));
    RaiseTo(impl_->delay, ToSeconds(delay));
    impl_->running->Set(status.state == StreamStatus::State::Running ? 1 : 0);
    impl_->rate->Set(status.framesPerSecond);
    impl_->held->Set(static_cast<double>(frames));
    impl_->viewers->Set(static_cast<double>(viewers));
}

struct StreamMetricsBook::State {
    struct Entry {
        std::unique_ptr<StreamMetrics> metrics;
        std::size_t users = 0;
    };

    explicit State(Registry& target) : registry(target) {}

    Registry& registry;
    std::mutex mutex;
    std::map<std::string, Entry> entries;
};

StreamMetricsBook::StreamMetricsBook(Registry& registry) : state_(std::make_shared<State>(registry)) {}

std::shared_ptr<StreamMetrics> StreamMetricsBook::Get(std::string const& id) {
    std::lock_guard<std::mutex> const lock(state_->mutex);
    auto& entry = state_->entries[id];
    if (!entry.metrics) entry.metrics = std::make_unique<StreamMetrics>(state_->registry, id);
    ++entry.users;
    // Series of one name are one to the registry: they go under the lock under which they come.
    return {entry.metrics.get(), [state = state_, id](StreamMetrics*) {
                std::lock_guard<std::mutex> const atEnd(state->mutex);
                auto const found = state->entries.find(id);
                if (--found->second.users == 0) state->entries.erase(found);
            }};
}

}  // namespace qel::serve
