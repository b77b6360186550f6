#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::configuration {
namespace {

using node::Map;
using test::MessageOf;
using Byte = node::Primitive<unsigned char>;
using EventPtr = std::shared_ptr<Event const>;

constexpr node::binding::Options CallNow{node::binding::Option::CallNow};

class Binding : public testing::Test {
protected:
    // A handler that notes its name and the node's value.
    Node::Handler Note(std::string name) {
        return [this, name](EventPtr const& event) {
            calls.push_back(name + std::to_string(event->GetNode().As<Byte>().Get()));
        };
    }

    std::vector<std::string> calls;
    std::shared_ptr<Byte> const node = Byte::Make("size", "", 1);
};

using Calls = std::vector<std::string>;

TEST_F(Binding, CallsItsHandlerWheneverTheNodeFires) {
    auto const binding = node->Bind(Note("a"));
    EXPECT_TRUE(binding);
    EXPECT_EQ(calls, Calls{});
    node->Stage(2);
    node->Commit();
    EXPECT_EQ(calls, Calls{}) << "neither staging nor committing fires";
    node->Fire();
    EXPECT_EQ(calls, Calls{"a2"});
    node->Fire();
    EXPECT_EQ(calls, (Calls{"a2", "a2"})) << "firing does not ask whether there was a change";
}

TEST_F(Binding, EndsWhenDropped) {
    {
        auto const binding = node->Bind(Note("a"));
        node->Fire();
    }
    node->Fire();
    EXPECT_EQ(calls, Calls{"a1"});
}

TEST_F(Binding, FreesItsHandlerWhenDropped) {
    auto const held = std::make_shared<int>();
    auto binding = node->Bind([held](EventPtr const&) {});
    EXPECT_EQ(held.use_count(), 2);
    binding.Release();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Binding, CallsHandlersInTheOrderTheyWereBound) {
    auto const a = node->Bind(Note("a"));
    auto b = node->Bind(Note("b"));
    auto const c = node->Bind(Note("c"));
    node->Fire();
    EXPECT_EQ(calls, (Calls{"a1", "b1", "c1"}));
    calls.clear();
    b.Release();
    node->Fire();
    EXPECT_EQ(calls, (Calls{"a1", "c1"}));
}

TEST_F(Binding, WithCallNowStartsWithTheCurrentValue) {
    node->Set(5);
    auto const binding = node->Bind(Note("a"), CallNow);
    EXPECT_EQ(calls, Calls{"a5"});
    node->Set(6);
    EXPECT_EQ(calls, (Calls{"a5", "a6"}));
}

TEST_F(Binding, WithCallNowIsGoneWhenThatCallThrows) {
    auto const held = std::make_shared<int>();
    int count = 0;
    auto const handler = [held, &count](EventPtr const&) {
        if (++count == 1) throw std::runtime_error("not now");
    };
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { auto const binding = node->Bind(handler, CallNow); }), "not now");
    node->Fire();
    EXPECT_EQ(count, 1);
    EXPECT_EQ(held.use_count(), 2) << "the bound copy is gone, held and the handler remain";
}

TEST_F(Binding, NeedsAHandler) {
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] { auto const binding = node->Bind({}); }),
              "size: the handler to bind must not be empty");
}

TEST_F(Binding, OutlivesItsNode) {
    auto held = std::make_shared<int>();
    auto other = Byte::Make("other", "", 1);
    auto binding = other->Bind([held](EventPtr const&) {});
    other.reset();
    EXPECT_TRUE(binding);
    binding.Release();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Binding, KeepsTheNodeAliveWithTheEvent) {
    auto other = Byte::Make("other", "", 7);
    EventPtr kept;
    auto const binding = other->Bind([&](EventPtr const& event) { kept = event; });
    other->Fire();
    other.reset();
    EXPECT_EQ(kept->GetNode().As<Byte>().Get(), 7);
}

TEST_F(Binding, RunsTheOthersWhenAHandlerThrows) {
    auto const a = node->Bind([](EventPtr const&) { throw std::runtime_error("first"); });
    auto const b = node->Bind(Note("b"));
    auto const c = node->Bind([](EventPtr const&) { throw std::logic_error("second"); });
    auto const d = node->Bind(Note("d"));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { node->Fire(); }), "first");
    EXPECT_EQ(calls, (Calls{"b1", "d1"}));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { node->Set(2); }), "first");
    EXPECT_EQ(node->Get(), 2) << "the value is set all the same";
    EXPECT_EQ(calls, (Calls{"b1", "d1", "b2", "d2"}));
}

TEST_F(Binding, LetsItsHandlerUseTheTree) {
    auto const root = Map::Make("root");
    auto const other = Byte::Make("other", "", 0);
    root->Insert(node);
    root->Insert(other);
    type::Binding added;
    auto const otherBinding = other->Bind(Note("other"));
    auto const binding = node->Bind([&](EventPtr const& event) {
        EXPECT_EQ(event->GetNode().GetPath(root), "size");
        other->Stage(static_cast<unsigned char>(node->Get() * 2));
        other->Commit();
        other->Fire();
        if (!root->Find("new")) root->Insert(Byte::Make("new", "", 1));
        added = node->Bind(Note("added"));
    });
    node->Set(4);
    EXPECT_EQ(calls, Calls{"other8"}) << "a handler bound meanwhile waits for the next time";
    EXPECT_NE(root->Find("new"), nullptr);
}

TEST_F(Binding, LetsItsHandlerCorrectTheNode) {
    auto const a = node->Bind([&](EventPtr const&) {
        if (node->Get() > 10) node->Set(10);
    });
    auto const b = node->Bind(Note("b"));
    node->Set(50);
    EXPECT_EQ(node->Get(), 10);
    EXPECT_EQ(calls, (Calls{"b10", "b10"}));
}

TEST_F(Binding, MayBeDroppedFromInsideItsHandler) {
    auto const held = std::make_shared<int>(7);
    type::Binding binding;
    int calledWith = 0;
    binding = node->Bind([&, held](EventPtr const&) {
        binding.Release();
        EXPECT_GT(held.use_count(), 1) << "the running handler still holds what it captured";
        calledWith += *held;
    });
    node->Fire();
    node->Fire();
    EXPECT_EQ(calledWith, 7);
    EXPECT_EQ(held.use_count(), 1) << "and is freed once it has run";
}

TEST_F(Binding, MayBeDroppedFromInsideItsHandlerThatThrows) {
    auto const held = std::make_shared<int>();
    type::Binding binding;
    binding = node->Bind([&, held](EventPtr const&) {
        binding.Release();
        throw std::runtime_error("last words");
    });
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { node->Fire(); }), "last words");
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Binding, MayBeDroppedFromInsideANestedRunOfItsHandler) {
    auto const held = std::make_shared<int>();
    type::Binding binding;
    int runs = 0;
    binding = node->Bind([&, held](EventPtr const&) {
        if (++runs < 3) {
            node->Fire();
        } else {
            binding.Release();
        }
        EXPECT_GT(held.use_count(), 1);
    });
    node->Fire();
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Binding, DroppedByAnEarlierHandlerIsNotCalled) {
    type::Binding later;
    auto const a = node->Bind([&](EventPtr const&) { later.Release(); });
    later = node->Bind(Note("later"));
    node->Fire();
    EXPECT_EQ(calls, Calls{});
}

TEST(Fire, OfAMapCallsItsOwnHandlersAndThoseOfChangedNodesBelow) {
    auto const root = Map::Make("root"), map = Map::Make("map");
    auto const changed = Byte::Make("changed", "", 1), same = Byte::Make("same", "", 1);
    root->Insert(map);
    map->Insert(changed);
    map->Insert(same);
    std::vector<std::string> calls;
    auto const note = [&](EventPtr const& event) { calls.push_back(event->GetNode().GetName()); };
    std::vector<type::Binding> bindings;
    for (auto const& node : {root->GetPtr(), map->GetPtr(), changed->GetPtr(), same->GetPtr()}) {
        bindings.push_back(node->Bind(note));
    }
    changed->Stage(2);
    same->Stage(1);
    root->Commit();
    EXPECT_EQ(changed->Get(), 2);
    EXPECT_EQ(calls, Calls{});
    root->Fire();
    EXPECT_EQ(calls, (Calls{"changed", "root"}));
    root->Fire();
    EXPECT_EQ(calls, (Calls{"changed", "root", "root"})) << "a change is told of once";
    changed->Fire();
    EXPECT_EQ(calls, (Calls{"changed", "root", "root", "changed"})) << "and does not reach the nodes above";
}

TEST(Fire, GoesOnToTheNextNodeWhenAHandlerThrows) {
    auto const root = Map::Make("root");
    auto const a = Byte::Make("a", "", 1), b = Byte::Make("b", "", 1);
    root->Insert(a);
    root->Insert(b);
    int calls = 0;
    auto const first = a->Bind([](EventPtr const&) { throw std::runtime_error("a"); });
    auto const second = b->Bind([&](EventPtr const&) { ++calls; });
    a->Stage(2);
    b->Stage(2);
    root->Commit();
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { root->Fire(); }), "a");
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace qel::configuration
