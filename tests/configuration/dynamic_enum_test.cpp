#include "qel/configuration/node/dynamic_enum.hpp"

#include <stdexcept>

#include <cereal/archives/json.hpp>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::configuration::node {
namespace {

using test::MessageOf;

std::shared_ptr<DynamicEnum> Make(Options options = {}) {
    return DynamicEnum::Make("state", {"off", "on", "standby"}, "off", "What it does", options);
}

TEST(DynamicEnum, IsMadeWithItsChoices) {
    auto const node = Make(Options(10));
    EXPECT_STREQ(node->GetTypeName(), "qel.configuration.node.DynamicEnum");
    EXPECT_EQ(node->GetName(), "state");
    EXPECT_EQ(node->GetDescription(), "What it does");
    EXPECT_EQ(node->GetOptions().GetValue(), 10);
    EXPECT_EQ(node->Get(), "off");
    EXPECT_EQ(node->GetChoices(), (std::set<std::string>{"off", "on", "standby"}));
    EXPECT_TRUE(node->Is<Value>());
    EXPECT_FALSE(node->Is<Primitive<std::string>>());
}

TEST(DynamicEnum, TakesItsChoicesAlone) {
    auto const node = Make();
    node->Stage("on");
    EXPECT_EQ(node->Get(), "off");
    node->Commit();
    EXPECT_EQ(node->Get(), "on");
    node->Set("standby");
    EXPECT_EQ(node->Get(), "standby");
    std::string const message = "state: the value 'On' is not one of the choices 'off', 'on', 'standby'";
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Stage("On"); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set("On"); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(object::Primitive<std::string>("On")); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { json::Stage(*node, R"({"state": "On"})"); }), message);
    EXPECT_EQ(node->Get(), "standby");
    EXPECT_EQ(node->GetStaged(), nullptr);
}

TEST(DynamicEnum, RefusesWhatIsNoText) {
    EXPECT_EQ(MessageOf<object::BadCast>([] { Make()->Set(object::Primitive<bool>(true)); }),
              "Failed to cast the runtime object from 'qel.object.Bool' to a 'qel.object.String'");
    EXPECT_EQ(MessageOf<cereal::Exception>([] { json::Stage(*Make(), R"({"state": 1})"); }),
              "state: expected a text, found the number 1");
}

TEST(DynamicEnum, RefusesADefaultThatIsNoChoice) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] { DynamicEnum::Make("state", {"on"}, "off", ""); }),
              "state: the value 'off' is not one of the choices 'on'");
}

TEST(DynamicEnum, ChangesItsChoices) {
    auto const node = Make();
    node->SetChoices({"dim", "off"});
    node->Set("dim");
    EXPECT_EQ(node->Get(), "dim");
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Stage("on"); }),
              "state: the value 'on' is not one of the choices 'dim', 'off'");
}

TEST(DynamicEnum, KeepsAValueThatIsNoChoiceAnyMore) {
    auto const node = Make();
    node->Set("on");
    node->SetChoices({});
    EXPECT_EQ(node->Get(), "on");
    EXPECT_EQ(json::Defaults(*node), R"({"state": "off"})");
}

TEST(DynamicEnum, DropsAStagedValueThatIsNoChoiceAnyMore) {
    auto const node = Make();
    node->Stage("on");
    node->SetChoices({"off", "on"});
    EXPECT_NE(node->GetStaged(), nullptr);
    node->SetChoices({"off"});
    EXPECT_EQ(node->GetStaged(), nullptr);
    node->Commit();
    EXPECT_EQ(node->Get(), "off");
}

TEST(DynamicEnum, CannotChangeItsChoicesWhenFrozen) {
    auto const node = Make();
    node->Freeze(Freeze::Frozen);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { node->SetChoices({}); }), "state: the configuration node is frozen");
    EXPECT_EQ(node->GetChoices().size(), 3U);
}

TEST(DynamicEnum, CopiesTheChoicesToo) {
    auto const node = DynamicEnum::Make("other", {"x"}, "x", "");
    node->Copy(*Make());
    EXPECT_EQ(node->Get(), "off");
    node->Set("on");
    EXPECT_EQ(node->Get(), "on");
    EXPECT_EQ(MessageOf<object::BadCast>([&] { node->Copy(*Primitive<std::string>::Make("a", "", "off")); }),
              "Failed to cast the runtime object from 'qel.configuration.node.String' to a "
              "'qel.configuration.node.DynamicEnum'");
}

TEST(DynamicEnum, StatesItsChoicesInItsSchema) {
    EXPECT_EQ(json::Schema(*Make()), R"({"type": "string","default": "off","enum": ["off","on","standby"]})");
    EXPECT_EQ(
        json::Schema(*Make({Option::ReadOnly, Option::WriteOnly})),
        R"({"type": "string","default": "off","enum": ["off","on","standby"],"readOnly": true,"writeOnly": true})");
}

}  // namespace
}  // namespace qel::configuration::node
