#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qel::serve {

/// Something that happened, told to whoever listens.
struct Event {
    /// "detection" (a line of `qel run`), "configuration", "model", "stream".
    std::string kind;
    /// The stream it is about; empty for none.
    std::string stream;
    /// One JSON value on one line, without a line end.
    std::string data;
    /// Counts up by one with each event of the bus, from 1; given by Publish.
    std::uint64_t id = 0;
};

/// Hands events to any number of listeners. A slow listener loses the oldest events, which are counted; it never
/// delays the publisher, nor grows. What waits to be taken outlives the bus. Any thread.
class EventBus {
public:
    /// What one listener is still to take. Any thread.
    class Subscription {
    public:
        virtual ~Subscription() = default;
        /// The next event; null when there is none.
        virtual std::shared_ptr<Event const> Take() = 0;
        /// How many events were lost since this was asked last.
        virtual std::uint64_t TakeLost() = 0;
    };

    struct Interest {
        /// Empty: all kinds, all streams. Events that are about no stream come whatever the streams.
        std::vector<std::string> kinds{}, streams{};
        /// Bounds of what waits to be taken; an event that is larger alone is lost itself.
        std::size_t maxEvents = 1024;
        std::size_t maxBytes = 4U << 20;
    };

    EventBus();
    EventBus(EventBus const&) = delete;
    EventBus& operator=(EventBus const&) = delete;
    ~EventBus();

    /// Events from now on, until the last pointer to the subscription goes; wake does not run any more then.
    /// wake: called whenever an event comes to an empty queue, on the publisher's thread; it must not block or throw,
    /// but may take the events, or drop the subscription. May be empty.
    std::shared_ptr<Subscription> Subscribe(Interest interest, std::function<void()> wake);
    /// Gives the event its id and hands it on.
    void Publish(Event event);
    /// Calls a function with each event, none of which is lost, on the publisher's thread and before any listener is
    /// given the event; it has no id yet. tap: delays the publisher, so it must be quick; must not throw. It stays for
    /// the life of the bus. Not while another thread publishes.
    void AddTap(std::function<void(Event const&)> tap);
    /// Events that all listeners together have lost.
    std::uint64_t GetLost() const;
    std::size_t GetListeners() const;

private:
    class Queue;
    class Listener;
    struct Impl;
    // Shared with the listeners, which take themselves off it.
    std::shared_ptr<Impl> impl_;
};

}  // namespace qel::serve
