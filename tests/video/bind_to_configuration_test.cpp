#include <atomic>
#include <chrono>
#include <future>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::algorithm::video {
namespace {

using configuration::Property;
using configuration::node::Map;
using configuration::node::Primitive;
using hash::MurmurThree32;
using object::Object;
using qel::test::MessageOf;

using Number = Primitive<std::int32_t>;

/// What a setter was called with.
struct Call {
    void* owner;
    Object const* node;

    bool operator==(Call const&) const = default;
};

/// What a registry entry refers to; as entries are never removed, these stay as well.
struct Declaration {
    std::string name = std::string("test.") + testing::UnitTest::GetInstance()->current_test_info()->name();
    std::vector<Property> properties{};
    int calls = 0;
};

std::list<Declaration> declarations;

/// Registers an algorithm with some properties under a name of the test's own, and makes an instance.
class BindToConfiguration : public testing::Test {
protected:
    BindToConfiguration() {
        auto properties = [&declaration = declaration_]() -> auto& {
            ++declaration.calls;
            return declaration.properties;
        };
        registry::Register({id_, declaration_.name.c_str(), {}, properties, {}});
    }

    std::shared_ptr<Number> AddNode(std::string const& name, std::int32_t value = 0) {
        auto node = Number::Make(name, "", value);
        map_->Insert(node);
        return node;
    }

    void AddRecordingProperty(std::string const& name) {
        properties_.push_back({name, {}, [this](void* owner, Object const& node) {
                                   calls_.push_back({owner, &node});
                               }});
    }

    Declaration& declaration_ = declarations.emplace_back();
    std::vector<Property>& properties_ = declaration_.properties;
    MurmurThree32 const id_{declaration_.name};
    std::vector<Call> calls_;
    std::shared_ptr<Map> map_ = Map::Make("settings");
    Algorithm algorithm_{id_, Type::Passthrough, {}};
};

/// Whether another thread can lock the registry within some time; if not, it does so as soon as it can.
bool IsRegistryFree(std::chrono::milliseconds patience = std::chrono::seconds(30)) {
    auto const locked = std::make_shared<std::promise<void>>();
    auto const done = locked->get_future();
    std::thread([locked] {
        auto const lock = registry::Get().GetMap();
        locked->set_value();
    }).detach();
    return done.wait_for(patience) == std::future_status::ready;
}

TEST_F(BindToConfiguration, WithoutPropertiesGivesNoBindings) {
    EXPECT_TRUE(algorithm_.BindToConfiguration(*map_).empty());
    EXPECT_EQ(declaration_.calls, 1);
    EXPECT_TRUE(IsRegistryFree());
}

TEST_F(BindToConfiguration, CallsEachSetterOnceAtOnceWithTheAlgorithmAndTheNode) {
    AddRecordingProperty("first");
    AddRecordingProperty("second");
    auto const second = AddNode("second");
    auto const first = AddNode("first");
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    EXPECT_EQ(bindings.size(), 2U);
    EXPECT_EQ(calls_, (std::vector<Call>{{&algorithm_, first.get()}, {&algorithm_, second.get()}}));
}

TEST_F(BindToConfiguration, CallsTheSetterOnceForEachChangeOfItsNodeWhileTheBindingIsHeld) {
    AddRecordingProperty("first");
    AddRecordingProperty("second");
    auto const first = AddNode("first");
    auto const second = AddNode("second");
    auto bindings = algorithm_.BindToConfiguration(*map_);
    calls_.clear();
    second->Set(7);
    EXPECT_EQ(calls_, (std::vector<Call>{{&algorithm_, second.get()}}));
    bindings.erase(bindings.begin() + 1);
    second->Set(8);
    EXPECT_EQ(calls_.size(), 1U);
    first->Set(9);
    EXPECT_EQ(calls_.back(), (Call{&algorithm_, first.get()}));
    bindings.clear();
    first->Set(10);
    EXPECT_EQ(calls_.size(), 2U);
}

TEST_F(BindToConfiguration, LeavesAnEmptyBindingWhereNothingCanBeBound) {
    AddRecordingProperty("without a node");
    AddRecordingProperty("bound");
    properties_.push_back({"without a setter", {}, {}});
    AddRecordingProperty("bound too");
    AddNode("bound");
    AddNode("without a setter");
    AddNode("bound too");
    AddNode("of nobody");
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    ASSERT_EQ(bindings.size(), 4U);
    EXPECT_FALSE(bindings[0]);
    EXPECT_TRUE(bindings[1]);
    EXPECT_FALSE(bindings[2]);
    EXPECT_TRUE(bindings[3]);
    EXPECT_EQ(calls_.size(), 2U);
}

TEST_F(BindToConfiguration, KeepsACopyOfTheSetter) {
    AddRecordingProperty("value");
    auto const node = AddNode("value");
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    properties_[0].setter = [](void*, Object const&) { ADD_FAILURE() << "the copy was to be called"; };
    node->Set(1);
    EXPECT_EQ(calls_.size(), 2U);
}

TEST_F(BindToConfiguration, BindsEachInstanceToItself) {
    AddRecordingProperty("value");
    auto const node = AddNode("value");
    Algorithm other(algorithm_);
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    auto const otherBindings = other.BindToConfiguration(*map_);
    calls_.clear();
    node->Set(1);
    EXPECT_EQ(calls_, (std::vector<Call>{{&algorithm_, node.get()}, {&other, node.get()}}));
}

TEST_F(BindToConfiguration, HoldsNoOwnerOfTheEventAfterTheCall) {
    AddRecordingProperty("value");
    auto node = AddNode("value");
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    std::weak_ptr<Number> const watch = node;
    node->Set(1);
    node.reset();
    map_.reset();
    EXPECT_TRUE(watch.expired());
}

TEST_F(BindToConfiguration, WithoutAnEntryThrowsAndLeavesTheRegistryFree) {
    Algorithm stranger(MurmurThree32("test.stranger"), Type::Inplace, {});
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { auto const bindings = stranger.BindToConfiguration(*map_); }),
              "unordered_map::at");
    EXPECT_TRUE(IsRegistryFree());
    Algorithm const taken(std::move(stranger));
    EXPECT_EQ(
        MessageOf<std::out_of_range>([&] { auto const bindings = stranger.BindToConfiguration(*map_); }),  // NOLINT
        "unordered_map::at");
}

TEST_F(BindToConfiguration, HoldsTheRegistryWhileItBindsAndNotLater) {
    std::chrono::milliseconds patience(50);
    std::vector<bool> free;
    auto const ask = [&](void*, Object const&) { free.push_back(IsRegistryFree(patience)); };
    properties_ = {{"first", {}, ask}, {"second", {}, ask}};
    auto const first = AddNode("first");
    AddNode("second");
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    EXPECT_EQ(free, (std::vector<bool>{false, false}));
    patience = std::chrono::seconds(30);
    first->Set(1);
    EXPECT_EQ(free, (std::vector<bool>{false, false, true}));
}

TEST_F(BindToConfiguration, ASetterThatThrowsEndsItWithTheRegistryFreeAndNothingBound) {
    AddRecordingProperty("first");
    properties_.push_back({"second", {}, [](void*, Object const&) { throw std::runtime_error("not this one"); }});
    AddRecordingProperty("third");
    auto const first = AddNode("first");
    AddNode("second");
    AddNode("third");
    try {
        auto const bindings = algorithm_.BindToConfiguration(*map_);
        ADD_FAILURE() << "nothing was thrown";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "not this one");
    }
    EXPECT_TRUE(IsRegistryFree());
    EXPECT_EQ(calls_.size(), 1U);
    first->Set(1);
    EXPECT_EQ(calls_.size(), 1U);
}

TEST_F(BindToConfiguration, WhatASetterThrowsLaterReachesWhoeverChangedTheNode) {
    properties_.push_back({"value", {}, [](void*, Object const& node) {
                               if (node.As<Number>().Get() > 5) throw std::runtime_error("too large");
                           }});
    auto const node = AddNode("value");
    auto const bindings = algorithm_.BindToConfiguration(*map_);
    EXPECT_NO_THROW(node->Set(5));
    EXPECT_THROW(node->Set(6), std::runtime_error);
}

TEST_F(BindToConfiguration, ServesManyThreadsAtOnce) {
    std::atomic<int> calls = 0;
    properties_.push_back({"value", {}, [&calls](void*, Object const&) { ++calls; }});
    AddNode("value");
    constexpr int Rounds = 200;
    auto const bind = [&] {
        Algorithm instance(id_, Type::Inplace, {});
        for (int i = 0; i < Rounds; ++i) auto const bindings = instance.BindToConfiguration(*map_);
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) threads.emplace_back(bind);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(calls, 3 * Rounds);
}

}  // namespace
}  // namespace qel::algorithm::video
