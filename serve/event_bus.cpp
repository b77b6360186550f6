#include "event_bus.hpp"

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>
#include <utility>

namespace qel::serve {
namespace {

bool Contains(std::vector<std::string> const& wanted, std::string const& text) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), text) != wanted.end();
}

std::size_t GetSize(Event const& event) {
    return sizeof event + event.kind.size() + event.stream.size() + event.data.size();
}

}  // namespace

/// What waits for one listener.
class EventBus::Queue {
public:
    Queue(Interest interest, std::function<void()> wake) : interest_(std::move(interest)), wake_(std::move(wake)) {}

    bool Wants(Event const& event) const {
        return Contains(interest_.kinds, event.kind) &&
               (event.stream.empty() || Contains(interest_.streams, event.stream));
    }

    struct Pushed {
        bool wasEmpty = false;
        std::uint64_t lost = 0;
    };

    Pushed Push(std::shared_ptr<Event const> event) {
        std::size_t const size = GetSize(*event);
        std::lock_guard const lock(mutex_);
        if (size > interest_.maxBytes || interest_.maxEvents == 0) {
            ++lost_;
            return {.lost = 1};
        }
        Pushed pushed{.wasEmpty = events_.empty()};
        events_.push_back(std::move(event));
        bytes_ += size;
        while (bytes_ > interest_.maxBytes || events_.size() > interest_.maxEvents) {
            Pop();
            ++pushed.lost;
        }
        lost_ += pushed.lost;
        return pushed;
    }

    std::shared_ptr<Event const> Take() {
        std::lock_guard const lock(mutex_);
        return events_.empty() ? nullptr : Pop();
    }

    std::uint64_t TakeLost() {
        std::lock_guard const lock(mutex_);
        return std::exchange(lost_, 0);
    }

    void Wake() {
        std::lock_guard const lock(waking_);
        if (wake_ && !closed_) wake_();
    }

    /// When it returns, wake does not run on another thread, nor will it again.
    void Close() {
        std::lock_guard const lock(waking_);
        closed_ = true;
    }

private:
    std::shared_ptr<Event const> Pop() {
        auto event = std::move(events_.front());
        events_.pop_front();
        bytes_ -= GetSize(*event);
        return event;
    }

    Interest const interest_;
    std::mutex mutex_;
    std::deque<std::shared_ptr<Event const>> events_;
    std::size_t bytes_ = 0;
    std::uint64_t lost_ = 0;
    // Recursive, and not the lock of the events: wake may take these and drop the subscription.
    std::recursive_mutex waking_;
    std::function<void()> const wake_;
    bool closed_ = false;
};

struct EventBus::Impl {
    std::mutex mutex;
    std::vector<std::shared_ptr<Queue>> queues;
    std::uint64_t lastId = 0;
    // Not guarded: they are there before anything is published.
    std::vector<std::function<void(Event const&)>> taps;
    std::atomic<std::uint64_t> lost = 0;
};

/// The listener's end of a queue.
class EventBus::Listener : public Subscription {
public:
    Listener(std::shared_ptr<Impl> bus, std::shared_ptr<Queue> queue) : bus_(std::move(bus)), queue_(std::move(queue)) {
        std::lock_guard const lock(bus_->mutex);
        bus_->queues.push_back(queue_);
    }
    Listener(Listener const&) = delete;
    Listener& operator=(Listener const&) = delete;

    ~Listener() override {
        {
            std::lock_guard const lock(bus_->mutex);
            std::erase(bus_->queues, queue_);
        }
        queue_->Close();
    }

    std::shared_ptr<Event const> Take() override { return queue_->Take(); }
    std::uint64_t TakeLost() override { return queue_->TakeLost(); }

private:
    std::shared_ptr<Impl> bus_;
    std::shared_ptr<Queue> queue_;
};

EventBus::EventBus() : impl_(std::make_shared<Impl>()) {}

EventBus::~EventBus() = default;

std::shared_ptr<EventBus::Subscription> EventBus::Subscribe(Interest interest, std::function<void()> wake) {
    return std::make_shared<Listener>(impl_, std::make_shared<Queue>(std::move(interest), std::move(wake)));
}

void EventBus::AddTap(std::function<void(Event const&)> tap) { impl_->taps.push_back(std::move(tap)); }

void EventBus::Publish(Event event) {
    for (auto const& tap : impl_->taps) tap(event);
    std::vector<std::shared_ptr<Queue>> toWake;
    {
        // Held for all queues, so that each listener is given the events in the order of their ids.
        std::lock_guard const lock(impl_->mutex);
        event.id = ++impl_->lastId;
        auto const shared = std::make_shared<Event const>(std::move(event));
        for (auto const& queue : impl_->queues) {
            if (!queue->Wants(*shared)) continue;
            auto const pushed = queue->Push(shared);
            impl_->lost += pushed.lost;
            if (pushed.wasEmpty) toWake.push_back(queue);
        }
    }
    for (auto const& queue : toWake) queue->Wake();
}

std::uint64_t EventBus::GetLost() const { return impl_->lost; }

std::size_t EventBus::GetListeners() const {
    std::lock_guard const lock(impl_->mutex);
    return impl_->queues.size();
}

}  // namespace qel::serve
