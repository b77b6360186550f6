#include "http_metrics.hpp"

#include <barrier>
#include <map>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/registry.h>

namespace qel::serve {
namespace {

using testing::ElementsAre;
using testing::Pair;

/// The values of a metric by its labels' values, in alphabetical order of the labels and joined by blanks.
std::map<std::string, double> ValuesOf(prometheus::Registry const& registry, std::string const& name) {
    std::map<std::string, double> values;
    for (auto const& family : registry.Collect()) {
        if (family.name != name) continue;
        for (auto const& metric : family.metric) {
            std::map<std::string, std::string> labels;
            for (auto const& label : metric.label) labels[label.name] = label.value;
            std::string key;
            for (auto const& [label, value] : labels) key += (key.empty() ? "" : " ") + value;
            values[key] = family.type == prometheus::MetricType::Gauge ? metric.gauge.value : metric.counter.value;
        }
    }
    return values;
}

TEST(HttpMetrics, CountRequestsByMethodRouteAndClassOfStatus) {
    prometheus::Registry registry;
    HttpMetrics metrics(registry);
    metrics.Count("/api/streams/{id}", "GET", 200);
    metrics.Count("/api/streams/{id}", "GET", 204);
    metrics.Count("/api/streams/{id}", "DELETE", 404);
    metrics.Count("", "GET", 404);
    // Whatever a client makes up: each value would be kept for ever.
    metrics.Count("", "BREW", 405);
    metrics.Count("", "get", 405);
    EXPECT_THAT(ValuesOf(registry, "qel_http_requests_total"),
                ElementsAre(Pair("DELETE /api/streams/{id} 4xx", 1), Pair("GET /api/streams/{id} 2xx", 2),
                            Pair("GET none 4xx", 1), Pair("other none 4xx", 2)));
}

TEST(HttpMetrics, TellConnectionsAndListenersAsTheyAre) {
    prometheus::Registry registry;
    HttpMetrics metrics(registry);
    EventBus bus;
    for (std::size_t const connections : {7U, 2U}) {
        auto const listener = bus.Subscribe({}, {});
        metrics.Update(connections, bus);
        EXPECT_THAT(ValuesOf(registry, "qel_http_connections"), ElementsAre(Pair("", connections)));
        EXPECT_THAT(ValuesOf(registry, "qel_event_listeners"), ElementsAre(Pair("", 1)));
    }
    metrics.Update(0, bus);
    EXPECT_THAT(ValuesOf(registry, "qel_event_listeners"), ElementsAre(Pair("", 0)));
}

TEST(HttpMetrics, CountEachLostEventOnceHoweverManyAskAtATime) {
    constexpr int Rounds = 12000, Threads = 4;
    prometheus::Registry registry;
    HttpMetrics metrics(registry);
    EventBus bus;
    auto const listener = bus.Subscribe({.maxEvents = 1}, {});
    bus.Publish({.kind = "model", .stream = {}, .data = {}});
    bool isRight = true;
    std::barrier loses(Threads, [&]() noexcept { bus.Publish({.kind = "model", .stream = {}, .data = {}}); });
    std::barrier compares(Threads, [&]() noexcept {
        isRight = isRight && ValuesOf(registry, "qel_events_lost_total")[""] == static_cast<double>(bus.GetLost());
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < Rounds; ++round) {
                loses.arrive_and_wait();
                metrics.Update(0, bus);
                compares.arrive_and_wait();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(isRight);
    EXPECT_THAT(ValuesOf(registry, "qel_events_lost_total"), ElementsAre(Pair("", Rounds)));
}

}  // namespace
}  // namespace qel::serve
