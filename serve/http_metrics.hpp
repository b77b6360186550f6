#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "event_bus.hpp"

namespace prometheus {
template <class T>
class Family;
class Counter;
class Gauge;
class Registry;
}  // namespace prometheus

namespace qel::serve {

/// Counts what the server itself does: requests by route, method and class of status, open connections, events that
/// slow listeners have lost. Any thread.
class HttpMetrics {
public:
    explicit HttpMetrics(prometheus::Registry& registry);

    /// Counts an answer. pattern: of its route, "" for none.
    void Count(std::string const& pattern, std::string const& method, unsigned int status);
    /// Takes over what is counted elsewhere.
    void Update(std::size_t connections, EventBus const& bus);

private:
    prometheus::Family<prometheus::Counter>& requests_;
    prometheus::Gauge& connections_;
    prometheus::Gauge& listeners_;
    prometheus::Counter& lost_;
    /// Held while the counter is brought up to date: two at a time would both add what is missing.
    std::mutex updating_;
};

}  // namespace qel::serve
