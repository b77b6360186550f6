#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <boost/json/parse.hpp>

#include "event_bus.hpp"

namespace qel::serve::test {

/// Whether something comes to be so before everybody would have lost patience.
template <class Condition>
bool Happens(Condition const& condition) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// Keeps all events of a bus, which outlives it, and when they came. Any thread.
class Listener {
public:
    explicit Listener(EventBus& bus) : subscription_(bus.Subscribe({}, [this] { TakeAll(); })) {}

    /// The data of all events of a kind, and of a stream unless that is empty.
    std::vector<std::string> Get(std::string const& kind, std::string const& stream = {}) const {
        std::lock_guard<std::mutex> const lock(mutex_);
        std::vector<std::string> data;
        for (auto const& [event, time] : events_) {
            if (event->kind == kind && (stream.empty() || event->stream == stream)) data.push_back(event->data);
        }
        return data;
    }

    /// The states that were told, each with its problem if there is one.
    std::vector<std::string> GetStates(std::string const& stream = {}) const {
        std::vector<std::string> states;
        for (std::string const& data : Get("stream", stream)) {
            auto const status = boost::json::parse(data).as_object();
            std::string const problem(status.at("problem").as_string());
            states.push_back(std::string(status.at("state").as_string()) + (problem.empty() ? "" : ": ") + problem);
        }
        return states;
    }

    /// When the events of a kind came; all events are forgotten.
    std::vector<std::chrono::steady_clock::time_point> TakeTimes(std::string const& kind) {
        std::lock_guard<std::mutex> const lock(mutex_);
        std::vector<std::chrono::steady_clock::time_point> times;
        for (auto const& [event, time] : events_) {
            if (event->kind == kind) times.push_back(time);
        }
        events_.clear();
        return times;
    }

private:
    struct Came {
        std::shared_ptr<Event const> event;
        std::chrono::steady_clock::time_point time;
    };

    void TakeAll() {
        std::lock_guard<std::mutex> const lock(mutex_);
        while (auto event = subscription_->Take()) events_.push_back({event, std::chrono::steady_clock::now()});
    }

    mutable std::mutex mutex_;
    std::vector<Came> events_;
    std::shared_ptr<EventBus::Subscription> subscription_;
};

}  // namespace qel::serve::test
