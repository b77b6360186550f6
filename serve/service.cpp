#include "service.hpp"

#include <optional>

#include <boost/filesystem/operations.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value_from.hpp>
#include <prometheus/registry.h>

#include "api/services.hpp"
#include "http/assets.hpp"
#include "http/guard.hpp"
#include "http_metrics.hpp"
#include "json_text.hpp"
#include "model_events.hpp"
#include "store.hpp"
#include "supervisor.hpp"

namespace qel::serve {

struct Service::Impl {
    Impl(host::Runtime& runtime, Options const& options, Warn const& warn)
        : algorithms(api::MakeAlgorithmList(runtime)),
          assets(options.assets),
          store(runtime, options.configuration),
          httpMetrics(metrics),
          changes(store.BindChanges([this](std::vector<std::string> const& changed) {
              boost::json::object const data{{"changed", boost::json::value_from(changed)}};
              bus.Publish({.kind = "configuration", .stream = {}, .data = host::SerializeJson(data)});
          })),
          models(runtime.GetDescriptors(), bus),
          guard(options.token),
          grace(options.grace) {
        if (auto const reason = store.GetSafeModeReason()) warn(*reason);
        for (Fault const& fault : store.GetProblems()) warn(fault.path + ": " + fault.reason);
        if (options.broker) Publish(*options.broker);
        supervisor.emplace(
            runtime,
            StreamList{[this] { return store.GetStreams(); },
                       [this](std::function<void()> handler) { return store.BindStreams(std::move(handler)); }},
            bus, metrics);
        api::AddRoutes(router, {.store = store,
                                .streams = api::MakeStreams(*supervisor),
                                .bus = bus,
                                .metrics = metrics,
                                .guard = guard,
                                .assets = assets,
                                .folder = boost::filesystem::absolute(options.configuration).parent_path(),
                                .algorithms = algorithms,
                                .version = options.version,
                                .updateMetrics = [this] { httpMetrics.Update(server->GetConnections(), bus); }});
        site.emplace(router, guard, [this](std::string const& pattern, std::string const& method, unsigned int status) {
            httpMetrics.Count(pattern, method, status);
        });
        server.emplace(*site, options.endpoint, options.limits);
        server->Start();
    }

    /// Called before anything is found.
    void Publish(mqtt::Publisher::Options const& broker) {
        publisher.emplace(broker, metrics);
        bus.AddTap([this](Event const& event) {
            if (event.kind == "detection") publisher->Publish(event.stream, event.data);
        });
    }

    ~Impl() {
        // It is asked for its connections until they have ended.
        server->Stop();
    }

    std::vector<std::string> Stop() {
        auto const deadline = std::chrono::steady_clock::now() + grace;
        supervisor->RequestStop();
        bool const isAnswered = server->Stop(deadline);
        std::vector<std::string> hanging = supervisor->Stop(deadline);
        if (!isAnswered) hanging.push_back("an answer to a request is still being made");
        if (publisher) publisher->Stop();
        return hanging;
    }

    // In the order in which they need each other: the last one ends first.
    prometheus::Registry metrics;
    EventBus bus;
    std::optional<mqtt::Publisher> publisher;
    std::string algorithms;
    http::Assets assets;
    Store store;
    HttpMetrics httpMetrics;
    type::Binding changes;
    ModelEvents models;
    http::Guard guard;
    std::chrono::milliseconds grace;
    std::optional<Supervisor> supervisor;
    http::Router router;
    std::optional<http::Site> site;
    std::optional<http::Server> server;
};

Service::Service(host::Runtime& runtime, Options const& options, Warn const& warn)
    : impl_(std::make_unique<Impl>(runtime, options, warn)) {}
Service::~Service() = default;

std::vector<std::string> Service::Stop() { return impl_->Stop(); }

http::Endpoint const& Service::GetEndpoint() const noexcept { return impl_->server->GetEndpoint(); }
EventBus& Service::GetBus() noexcept { return impl_->bus; }
prometheus::Registry& Service::GetMetrics() noexcept { return impl_->metrics; }

}  // namespace qel::serve
