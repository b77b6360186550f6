#include "supervisor.hpp"

#include <algorithm>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "algorithm_chain.hpp"
#include "catalogue.hpp"
#include "error.hpp"
#include "open_stream.hpp"
#include "stop_signal.hpp"
#include "stream.hpp"
#include "stream_metrics.hpp"

namespace qel::serve {
namespace {

/// How often streams that have ended are cleared away, and the metrics brought up to date.
constexpr std::chrono::milliseconds Round{500};

using StreamPtr = std::shared_ptr<Stream>;

}  // namespace

struct Supervisor::Impl {
    struct Entry {
        std::string id;
        StreamPtr stream;
    };

    Impl(host::Runtime& owner, StreamList streamList, EventBus& eventBus, prometheus::Registry& registry)
        : runtime(owner), list(std::move(streamList)), bus(eventBus), metrics(registry) {}

    void Update();
    StreamPtr Start(StreamSpec const& spec);
    StreamPtr Find(std::string_view id) const;
    std::vector<Entry> GetEntries() const;
    void KeepHouse();
    std::unique_ptr<host::AlgorithmChain> MakeAlgorithms(StreamSpec const& spec) const;

    host::Runtime& runtime;
    StreamList const list;
    EventBus& bus;
    StreamMetricsBook metrics;

    /// Held while the streams are brought in line with the list, so that the last list wins.
    std::mutex updateMutex;
    mutable std::mutex mutex;
    bool isStopping = false;
    std::vector<Entry> entries;
    /// Told to stop; a stream that hangs keeps only those of its own name from starting.
    std::vector<Entry> leaving;

    StopSignal stop;
    std::thread housekeeper;
    type::Binding binding;
};

std::unique_ptr<host::AlgorithmChain> Supervisor::Impl::MakeAlgorithms(StreamSpec const& spec) const {
    std::vector<host::ChainLink> links;
    for (std::string const& name : spec.algorithms) {
        auto const settings = spec.settings.find(name);
        if (settings == spec.settings.end()) throw host::Error("the algorithm '" + name + "' has no settings");
        links.push_back({host::FindAlgorithm(name), settings->second});
    }
    auto chain = std::make_unique<host::AlgorithmChain>(runtime, links);
    // Frames come at their own pace and wait for nobody: not for a model that is still being loaded either.
    for (std::size_t i = 0; i < links.size(); ++i) chain->GetAlgorithm(i)->SetOfflineModeEnabled(false);
    return chain;
}

StreamPtr Supervisor::Impl::Start(StreamSpec const& spec) {
    StreamPtr former;
    for (Entry const& entry : leaving) {
        if (entry.id == spec.id) former = entry.stream;
    }
    return std::make_shared<Stream>(
        spec,
        StreamParts{.open = OpenStream,
                    .makeAlgorithms = [this](StreamSpec const& now) { return MakeAlgorithms(now); },
                    .bus = bus,
                    .metrics = metrics.Get(spec.id)},
        former);
}

void Supervisor::Impl::Update() {
    std::lock_guard<std::mutex> const oneAtATime(updateMutex);
    std::vector<StreamSpec> const specs = list.get();
    std::lock_guard<std::mutex> const lock(mutex);
    if (isStopping) return;
    for (Entry const& entry : entries) {
        if (std::any_of(specs.begin(), specs.end(), [&](auto const& spec) { return spec.id == entry.id; })) continue;
        entry.stream->RequestStop();
        leaving.push_back(entry);
    }
    std::vector<Entry> next;
    for (StreamSpec const& spec : specs) {
        auto const known =
            std::find_if(entries.begin(), entries.end(), [&](auto const& entry) { return entry.id == spec.id; });
        if (known != entries.end()) known->stream->Follow(spec);
        next.push_back({spec.id, known != entries.end() ? known->stream : Start(spec)});
    }
    entries = std::move(next);
}

StreamPtr Supervisor::Impl::Find(std::string_view id) const {
    std::lock_guard<std::mutex> const lock(mutex);
    auto const found = std::find_if(entries.begin(), entries.end(), [&](auto const& entry) { return entry.id == id; });
    return found == entries.end() ? nullptr : found->stream;
}

std::vector<Supervisor::Impl::Entry> Supervisor::Impl::GetEntries() const {
    std::lock_guard<std::mutex> const lock(mutex);
    return entries;
}

void Supervisor::Impl::KeepHouse() {
    while (!stop.WaitUntil(StopSignal::Clock::now() + Round)) {
        for (Entry const& entry : GetEntries()) {
            entry.stream->LookAfter();
            entry.stream->RefreshMetrics();
        }
        // Cleared away after the lock is given up.
        std::vector<Entry> ended;
        std::lock_guard<std::mutex> const lock(mutex);
        auto const first = std::stable_partition(leaving.begin(), leaving.end(),
                                                 [](auto const& entry) { return !entry.stream->HasEnded(); });
        ended.assign(std::make_move_iterator(first), std::make_move_iterator(leaving.end()));
        leaving.erase(first, leaving.end());
    }
}

Supervisor::Supervisor(host::Runtime& runtime, StreamList list, EventBus& bus, prometheus::Registry& metrics)
    : impl_(std::make_unique<Impl>(runtime, std::move(list), bus, metrics)) {
    impl_->binding = impl_->list.bind([impl = impl_.get()] { impl->Update(); });
    impl_->Update();
    impl_->housekeeper = std::thread([impl = impl_.get()] { impl->KeepHouse(); });
}

Supervisor::~Supervisor() {
    RequestStop();
    impl_->binding = {};
    impl_->stop.Set();
    impl_->housekeeper.join();
}

void Supervisor::RequestStop() {
    std::lock_guard<std::mutex> const lock(impl_->mutex);
    impl_->isStopping = true;
    // All at once, so that they end side by side.
    for (auto const& entry : impl_->entries) entry.stream->RequestStop();
}

std::vector<std::string> Supervisor::Stop(std::chrono::steady_clock::time_point deadline) {
    RequestStop();
    std::vector<Impl::Entry> all;
    {
        std::lock_guard<std::mutex> const lock(impl_->mutex);
        all = impl_->leaving;
        all.insert(all.end(), impl_->entries.begin(), impl_->entries.end());
    }
    std::vector<std::string> hanging;
    std::set<std::string> named;
    for (auto const& [id, stream] : all) {
        // One that waits for a former one of its name is kept by that.
        if (stream->WaitForEnd(deadline) || !named.insert(id).second) continue;
        hanging.push_back("the stream '" + id + "' has not ended: " + stream->DescribeActivity());
    }
    return hanging;
}

std::vector<StreamStatus> Supervisor::GetStatus() const {
    std::vector<StreamStatus> status;
    for (auto const& entry : impl_->GetEntries()) status.push_back(entry.stream->GetStatus());
    return status;
}

std::optional<StreamStatus> Supervisor::GetStatus(std::string_view id) const {
    auto const stream = impl_->Find(id);
    if (!stream) return std::nullopt;
    return stream->GetStatus();
}

std::shared_ptr<Viewer> Supervisor::Look(std::string_view id, LookOptions options, std::function<void()> wake) {
    auto const stream = impl_->Find(id);
    return stream ? stream->Look(options, std::move(wake)) : nullptr;
}

}  // namespace qel::serve
