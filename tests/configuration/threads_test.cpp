#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"

namespace qel::configuration {
namespace {

using node::Map;
using Text = node::Primitive<std::string>;
using EventPtr = std::shared_ptr<Event const>;

constexpr int Rounds = 2000;

void RunTogether(std::vector<std::function<void()>> const& actions) {
    std::vector<std::thread> threads;
    for (auto const& action : actions) threads.emplace_back(action);
    for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ReadersSeeTheOldOrTheNewValue) {
    std::string const old(1000, 'a'), fresh(1000, 'b');
    auto const node = Text::Make("name", "", old);
    std::atomic<bool> isDone = false;
    auto const read = [&] {
        while (!isDone) {
            std::string const value = node->Get();
            ASSERT_TRUE(value == old || value == fresh);
        }
    };
    auto const write = [&] {
        for (int i = 0; i < Rounds; ++i) {
            node->Stage(i % 2 ? old : fresh);
            node->Commit();
            node->Fire();
        }
        isDone = true;
    };
    RunTogether({read, read, write});
    EXPECT_EQ(node->Get(), old);
}

TEST(Threads, ReadersSeeABatchWholeInTheOrderOfItsValues) {
    auto const map = Map::Make("map");
    map->Schema({Schema("a", "", 0), Schema("b", "", 0)});
    auto const a = Node::GetPtr<node::Primitive<std::int32_t>>(map->Find("a"));
    auto const b = Node::GetPtr<node::Primitive<std::int32_t>>(map->Find("b"));
    std::atomic<bool> isDone = false;
    auto const read = [&] {
        while (!isDone) {
            // b is read after a and so cannot be older.
            int const first = a->Get();
            ASSERT_GE(b->Get(), first);
        }
    };
    auto const write = [&] {
        for (int i = 1; i <= Rounds; ++i) map->Set({{"a", i}, {"b", i}});
        isDone = true;
    };
    RunTogether({read, read, write});
}

TEST(Threads, GrowAndReadOneTree) {
    auto const root = Map::Make("root");
    auto const list = node::Vector::Make("list");
    root->Insert(list);
    auto const write = [&](std::string const& name) {
        for (int i = 0; i < 200; ++i) {
            auto const child = Map::Make(name + std::to_string(i));
            child->Schema({Schema("value", "", i), Schema("state", "", "x", {}, {"x", "y"})});
            root->Insert(child);
            list->Add({{"", name}});
            EXPECT_EQ(root->Find(name + std::to_string(i) + ".value")->GetPath(root), child->GetName() + ".value");
        }
    };
    auto const read = [&] {
        for (int i = 0; i < 100; ++i) {
            for (auto const& child : root->GetChildren()) {
                child->GetPath();
                child->GetTimestamp();
                EXPECT_EQ(child->GetParent(), root);
            }
            json::Data(*root);
            json::Schema(*list);
        }
    };
    RunTogether({[&] { write("a"); }, [&] { write("b"); }, read});
    EXPECT_EQ(root->GetChildren().size(), 401U);
    EXPECT_EQ(list->GetSize(), 400U);
}

TEST(Threads, WriteOneTreeInEveryWay) {
    auto const map = Map::Make("map");
    map->Schema({Schema("size", "", 1, {}, Range{0, 1000}), Schema("state", "", "x", {}, {"x", "y"}),
                 Schema("numbers[*]", "", 0.5)});
    auto const state = Node::GetPtr<node::DynamicEnum>(map->Find("state"));
    auto const repeat = [](std::function<void(int)> const& action) {
        return [action] {
            for (int i = 0; i < 300; ++i) {
                try {
                    action(i);
                } catch (std::exception const&) {  // frozen, or no choice at that moment
                }
            }
        };
    };
    RunTogether({
        repeat([&](int i) {
            map->Set({{"size", i}, {"state", i % 2 ? "x" : "y"}});
        }),
        repeat([&](int i) {
            json::Stage(*map, R"({"size": )" + std::to_string(i) + R"(, "numbers": [1, 2]})");
            map->Commit();
            map->Fire();
        }),
        repeat([&](int i) {
            state->SetChoices(i % 2 ? std::set<std::string>{"x"} : std::set<std::string>{"x", "y"});
        }),
        repeat([&](int i) { map->Freeze(i % 2 ? node::Freeze::Thawed : node::Freeze::Frozen); }),
        repeat([&](int) { map->Discard(); }),
        repeat([&](int) {
            auto const copy = node::Primitive<std::int32_t>::Make("size", "", 0);
            copy->Copy(map->Find("size")->As<node::Value>());
            json::Data(*map);
        }),
    });
    map->Freeze(node::Freeze::Thawed);
    map->Set("size", 7);
    EXPECT_EQ(Node::GetPtr<node::Primitive<std::int32_t>>(map->Find("size"))->Get(), 7);
}

TEST(Threads, ADroppedHandlerDoesNotRunAnyMore) {
    auto const node = Text::Make("name", "", "a");
    std::atomic<bool> isDone = false;
    auto const fire = [&] {
        while (!isDone) node->Fire();
    };
    auto const bind = [&] {
        for (int i = 0; i < Rounds; ++i) {
            // A run after the drop would use a counter that is gone.
            auto count = std::make_unique<std::atomic<int>>(0);
            auto binding = node->Bind([&count](EventPtr const&) { ++*count; });
            if (i % 8 == 0) std::this_thread::yield();
            binding.Release();
            count.reset();
        }
        isDone = true;
    };
    RunTogether({fire, fire, bind});
}

TEST(Threads, ADropWaitsForARunningHandler) {
    auto const node = Text::Make("name", "", "a");
    std::atomic<bool> isInside = false, mayLeave = false;
    bool hasLeft = false;
    auto binding = node->Bind([&](EventPtr const&) {
        isInside = true;
        while (!mayLeave) std::this_thread::yield();
        hasLeft = true;
    });
    std::thread firing([&] { node->Fire(); });
    while (!isInside) std::this_thread::yield();
    std::thread opening([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        mayLeave = true;
    });
    binding.Release();
    EXPECT_TRUE(hasLeft);
    firing.join();
    opening.join();
}

TEST(Threads, AHandlerMayDropItselfWhileItRunsElsewhere) {
    auto const node = Text::Make("name", "", "a");
    auto const held = std::make_shared<int>();
    std::atomic<int> inside = 0;
    std::atomic<bool> isDropped = false;
    type::Binding binding;
    binding = node->Bind([&, held](EventPtr const&) {
        if (++inside == 1) {
            while (!isDropped) std::this_thread::yield();
        } else {
            binding.Release();
            isDropped = true;
        }
        EXPECT_GT(held.use_count(), 1);
    });
    std::thread first([&] { node->Fire(); });
    while (inside == 0) std::this_thread::yield();
    std::thread second([&] { node->Fire(); });
    first.join();
    second.join();
    EXPECT_EQ(held.use_count(), 1);
    node->Fire();
    EXPECT_EQ(inside, 2);
}

TEST(Threads, HandlersOnTwoThreadsMayFireEachOthersNodes) {
    auto const a = node::Primitive<std::int32_t>::Make("a", "", 0);
    auto const b = node::Primitive<std::int32_t>::Make("b", "", 0);
    auto const first = a->Bind([&](EventPtr const&) {
        if (a->Get() > b->Get()) b->Set(a->Get());
    });
    auto const second = b->Bind([&](EventPtr const&) {
        if (b->Get() > a->Get()) a->Set(b->Get());
    });
    RunTogether({[&] {
                     for (int i = 0; i < Rounds; ++i) a->Set(i);
                 },
                 [&] {
                     for (int i = 0; i < Rounds; ++i) b->Set(i);
                 }});
    a->Set(Rounds);
    EXPECT_EQ(b->Get(), Rounds);
}

TEST(Threads, PathsMayBeAskedForWhileTheParentGoes) {
    for (int i = 0; i < 300; ++i) {
        auto root = Map::Make("root");
        auto const node = Text::Make("name", "", "a");
        root->Insert(node);
        RunTogether({[&] { root.reset(); },
                     [&] {
                         std::string const path = node->GetPath();
                         ASSERT_TRUE(path == "root.name" || path == "name") << path;
                         node->GetParent();
                     }});
        EXPECT_EQ(node->GetPath(), "name");
    }
}

}  // namespace
}  // namespace qel::configuration
