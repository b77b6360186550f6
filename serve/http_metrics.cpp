#include "http_metrics.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/registry.h>

namespace qel::serve {
namespace {

prometheus::Gauge& AddGauge(prometheus::Registry& registry, char const* name, char const* help) {
    return prometheus::BuildGauge().Name(name).Help(help).Register(registry).Add({});
}

}  // namespace

HttpMetrics::HttpMetrics(prometheus::Registry& registry)
    : requests_(prometheus::BuildCounter()
                    .Name("qel_http_requests_total")
                    .Help("Requests that were answered")
                    .Register(registry)),
      connections_(AddGauge(registry, "qel_http_connections", "Open connections")),
      listeners_(AddGauge(registry, "qel_event_listeners", "Those who are told of events")),
      lost_(prometheus::BuildCounter()
                .Name("qel_events_lost_total")
                .Help("Events that listeners were too slow for")
                .Register(registry)
                .Add({})) {}

void HttpMetrics::Count(std::string const& pattern, std::string const& method, unsigned int status) {
    // Whatever a client makes up counts as one: each value is kept for ever.
    static constexpr std::array<std::string_view, 6> Methods{"GET", "HEAD", "POST", "PATCH", "DELETE", "OPTIONS"};
    bool const isKnown = std::find(Methods.begin(), Methods.end(), method) != Methods.end();
    requests_
        .Add({{"route", pattern.empty() ? std::string("none") : pattern},
              {"method", isKnown ? method : std::string("other")},
              {"status", std::to_string(status / 100) + "xx"}})
        .Increment();
}

void HttpMetrics::Update(std::size_t connections, EventBus const& bus) {
    connections_.Set(static_cast<double>(connections));
    listeners_.Set(static_cast<double>(bus.GetListeners()));
    std::lock_guard<std::mutex> const lock(updating_);
    lost_.Increment(static_cast<double>(bus.GetLost()) - lost_.Value());
}

}  // namespace qel::serve
