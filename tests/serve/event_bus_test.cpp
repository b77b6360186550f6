#include "event_bus.hpp"

#include <atomic>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::serve {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Event Make(std::string kind, std::string stream, std::string data = "{}") {
    return {.kind = std::move(kind), .stream = std::move(stream), .data = std::move(data)};
}

std::vector<std::uint64_t> TakeIds(EventBus::Subscription& subscription) {
    std::vector<std::uint64_t> ids;
    while (auto const event = subscription.Take()) ids.push_back(event->id);
    return ids;
}

TEST(EventBus, HandsEachListenerAllEventsWithConsecutiveIds) {
    EventBus bus;
    bus.Publish(Make("detection", "gate"));
    auto const first = bus.Subscribe({}, {});
    auto const second = bus.Subscribe({}, {});
    bus.Publish(Make("detection", "gate", R"({"n":1})"));
    bus.Publish(Make("model", ""));

    auto const event = first->Take();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, "detection");
    EXPECT_EQ(event->stream, "gate");
    EXPECT_EQ(event->data, R"({"n":1})");
    EXPECT_EQ(event->id, 2U);
    EXPECT_THAT(TakeIds(*first), ElementsAre(3U));
    EXPECT_THAT(TakeIds(*second), ElementsAre(2U, 3U));
    EXPECT_EQ(bus.GetLost(), 0U);
}

TEST(EventBus, KeepsBackWhatAListenerDidNotAskFor) {
    EventBus bus;
    auto const some = bus.Subscribe({.kinds = {"detection", "model"}, .streams = {"gate"}}, {});
    bus.Publish(Make("detection", "gate"));
    bus.Publish(Make("detection", "door"));
    bus.Publish(Make("stream", "gate"));
    bus.Publish(Make("model", ""));
    EXPECT_THAT(TakeIds(*some), ElementsAre(1U, 4U));
    EXPECT_EQ(some->TakeLost(), 0U);
}

TEST(EventBus, CallsATapWithEachEventBeforeAnyListenerHasIt) {
    EventBus bus;
    auto const slow = bus.Subscribe({.maxEvents = 1}, {});
    std::vector<std::string> tapped;
    bus.AddTap([&](Event const& event) {
        tapped.push_back(event.kind + " " + event.stream + " " + event.data);
        EXPECT_EQ(slow->Take(), nullptr);
    });
    bus.Publish(Make("detection", "gate", "1"));
    EXPECT_TRUE(slow->Take());
    bus.Publish(Make("model", "", "2"));
    EXPECT_TRUE(slow->Take());
    EXPECT_THAT(tapped, ElementsAre("detection gate 1", "model  2"));
}

TEST(EventBus, LosesTheOldestBeyondTheNumberOfEvents) {
    EventBus bus;
    auto const slow = bus.Subscribe({.maxEvents = 3}, {});
    auto const quick = bus.Subscribe({}, {});
    for (int i = 0; i < 5; ++i) bus.Publish(Make("detection", "gate"));
    EXPECT_EQ(slow->TakeLost(), 2U);
    EXPECT_EQ(slow->TakeLost(), 0U);
    EXPECT_THAT(TakeIds(*slow), ElementsAre(3U, 4U, 5U));
    EXPECT_EQ(TakeIds(*quick).size(), 5U);
    EXPECT_EQ(bus.GetLost(), 2U);
}

TEST(EventBus, LosesTheOldestBeyondTheNumberOfBytes) {
    EventBus bus;
    auto const slow = bus.Subscribe({.maxBytes = 5000}, {});
    for (int i = 0; i < 4; ++i) bus.Publish(Make("detection", "gate", std::string(2000, 'x')));
    EXPECT_EQ(slow->TakeLost(), 2U);
    EXPECT_THAT(TakeIds(*slow), ElementsAre(3U, 4U));
    // Taking makes room again.
    for (int i = 0; i < 2; ++i) bus.Publish(Make("detection", "gate", std::string(2000, 'x')));
    EXPECT_EQ(slow->TakeLost(), 0U);
    EXPECT_THAT(TakeIds(*slow), ElementsAre(5U, 6U));
}

TEST(EventBus, LosesAnEventThatIsTooLargeAndKeepsThoseBeforeIt) {
    EventBus bus;
    int woken = 0;
    auto const listener = bus.Subscribe({.maxBytes = 1000}, [&] { ++woken; });
    bus.Publish(Make("detection", "gate", std::string(2000, 'x')));
    EXPECT_EQ(woken, 0);
    bus.Publish(Make("detection", "gate"));
    bus.Publish(Make("detection", "gate", std::string(2000, 'x')));
    EXPECT_THAT(TakeIds(*listener), ElementsAre(2U));
    EXPECT_EQ(listener->TakeLost(), 2U);
    EXPECT_EQ(bus.GetLost(), 2U);

    auto const nothing = bus.Subscribe({.maxEvents = 0}, {});
    bus.Publish(Make("detection", "gate"));
    EXPECT_THAT(TakeIds(*nothing), IsEmpty());
    EXPECT_EQ(nothing->TakeLost(), 1U);
}

TEST(EventBus, WakesForAnEventThatComesToAnEmptyQueue) {
    EventBus bus;
    int woken = 0;
    auto const listener = bus.Subscribe({.kinds = {"model"}}, [&] { ++woken; });
    bus.Publish(Make("detection", "gate"));
    EXPECT_EQ(woken, 0);
    bus.Publish(Make("model", ""));
    bus.Publish(Make("model", ""));
    EXPECT_EQ(woken, 1);
    (void)TakeIds(*listener);
    bus.Publish(Make("model", ""));
    EXPECT_EQ(woken, 2);
}

TEST(EventBus, LetsTheWakeTakeAndDropTheSubscription) {
    EventBus bus;
    std::shared_ptr<EventBus::Subscription> listener;
    std::vector<std::uint64_t> ids;
    listener = bus.Subscribe({}, [&] {
        ids = TakeIds(*listener);
        listener.reset();
    });
    bus.Publish(Make("model", ""));
    EXPECT_THAT(ids, ElementsAre(1U));
    EXPECT_EQ(bus.GetListeners(), 0U);
}

TEST(EventBus, ForgetsAListenerWithItsLastPointer) {
    EventBus bus;
    int woken = 0;
    auto listener = bus.Subscribe({}, [&] { ++woken; });
    auto const other = bus.Subscribe({}, {});
    EXPECT_EQ(bus.GetListeners(), 2U);
    listener.reset();
    EXPECT_EQ(bus.GetListeners(), 1U);
    bus.Publish(Make("model", ""));
    EXPECT_EQ(woken, 0);
}

TEST(EventBus, MayGoBeforeItsListeners) {
    auto bus = std::make_unique<EventBus>();
    auto const listener = bus->Subscribe({}, {});
    bus->Publish(Make("model", ""));
    bus.reset();
    EXPECT_THAT(TakeIds(*listener), ElementsAre(1U));
}

TEST(EventBus, GivesEveryListenerAllEventsInOrderWhileOthersComeAndGo) {
    constexpr int Publishers = 3, Each = 2000, Kept = 2;
    EventBus bus;
    std::atomic<bool> done = false;
    std::vector<std::thread> readers, publishers;
    for (int i = 0; i < Kept; ++i) {
        auto listener = bus.Subscribe({.maxEvents = 100}, {});
        readers.emplace_back([&done, listener] {
            std::uint64_t last = 0, count = 0;
            for (bool stop = false; !stop;) {
                stop = done;
                while (auto const event = listener->Take()) {
                    EXPECT_GT(event->id, last);
                    last = event->id;
                    ++count;
                }
                std::this_thread::yield();
            }
            EXPECT_EQ(count + listener->TakeLost(), std::uint64_t{Publishers} * Each);
            EXPECT_EQ(last, std::uint64_t{Publishers} * Each);
        });
    }
    readers.emplace_back([&bus, &done] {
        while (!done) {
            // What a wake uses may go as soon as the subscription has gone.
            auto woken = std::make_unique<std::uint64_t>(0);
            auto listener = bus.Subscribe({.maxEvents = 2}, [&woken] { ++*woken; });
            std::this_thread::yield();
            listener.reset();
            woken.reset();
        }
    });
    for (int i = 0; i < Publishers; ++i) {
        publishers.emplace_back([&bus] {
            for (int n = 0; n < Each; ++n) bus.Publish(Make("detection", "gate"));
        });
    }
    for (auto& thread : publishers) thread.join();
    done = true;
    for (auto& thread : readers) thread.join();
    EXPECT_EQ(bus.GetListeners(), 0U);
}

}  // namespace
}  // namespace qel::serve
