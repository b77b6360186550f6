#include "qel/property/property.hpp"

#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "property/tank.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::property {
namespace {

using configuration::Range;
using configuration::node::DynamicEnum;
using configuration::node::Primitive;
using qel::test::MessageOf;
using test::Base;
using test::ChangesSchema;
using test::LevelSchema;
using test::ModeSchema;
using test::Tank;

void* Untyped(Tank& tank) { return static_cast<Base*>(&tank); }

/// A property "level" without a getter, as those of configurations are.
Schema SetOnlySchema() {
    Schema const schema = LevelSchema();
    return {schema.GetValue(), schema.GetSetter()};
}

TEST(Property, ReadsAndWritesItsOwnerByType) {
    Tank tank;
    Property level(LevelSchema(), Untyped(tank));
    Property mode(ModeSchema(), Untyped(tank));
    EXPECT_EQ(level.GetName(), "level");
    EXPECT_EQ(level.GetSchema(), LevelSchema());
    EXPECT_FALSE(level.IsBound());
    EXPECT_EQ(tank.GetChanges(), 0U);
    level.Set(2.5);
    EXPECT_EQ(tank.GetLevel(), 2.5);
    EXPECT_EQ(level.Get<double>(), 2.5);
    mode.Set("fast");
    EXPECT_EQ(mode.Get<std::string>(), "fast");
    EXPECT_EQ(tank.GetChanges(), 2U);
}

TEST(Property, ReadsWhatItsOwnerChangedByItself) {
    Tank tank;
    Property const level(LevelSchema(), Untyped(tank));
    tank.SetLevel(3);
    EXPECT_EQ(level.Get<double>(), 3);
}

TEST(Property, WithoutAGetterHoldsWhatWasSetLastAndTheDefaultBefore) {
    Tank tank;
    Property level(SetOnlySchema(), Untyped(tank));
    EXPECT_EQ(level.Get<double>(), 1.0);
    EXPECT_EQ(tank.GetChanges(), 0U);
    level.Set(4.0);
    EXPECT_EQ(level.Get<double>(), 4.0);
    EXPECT_EQ(tank.GetLevel(), 4.0);
}

TEST(Property, CallsTheSetterForTheSameValueToo) {
    Tank tank;
    Property level(LevelSchema(), Untyped(tank));
    level.Set(4.0);
    level.Set(4.0);
    EXPECT_EQ(tank.GetChanges(), 2U);
}

TEST(Property, ParsesTexts) {
    Tank tank;
    Property level(LevelSchema(), Untyped(tank));
    level.Set("7.5");
    EXPECT_EQ(level.Get<double>(), 7.5);
    EXPECT_THROW(level.Set("plenty"), std::invalid_argument);
    EXPECT_EQ(level.Get<double>(), 7.5);
}

TEST(Property, IsReadAsTheTypeItHas) {
    Tank tank;
    Property const level(LevelSchema(), Untyped(tank));
    EXPECT_EQ(MessageOf<object::BadCast>([&] { level.Get<std::string>(); }),
              "Failed to cast the runtime object from 'qel.object.Double' to a 'qel.object.String'");
}

TEST(Property, RefusesValuesThatAreNotAllowedAndChangesNothing) {
    struct Case {
        char const* name;
        double value;
        char const* error;
    };
    Case const cases[] = {
        {"above", 10.5, "level: the value 10.5 is out of the range 0 to 10"},
        {"below", -1, "level: the value -1 is out of the range 0 to 10"},
        {"no number", std::numeric_limits<double>::quiet_NaN(), "level: the value nan is not a finite number"},
    };
    Tank tank;
    Property level(SetOnlySchema(), Untyped(tank));
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(MessageOf<std::out_of_range>([&] { level.Set(c.value); }), c.error);
        EXPECT_EQ(level.Get<double>(), 1.0);
        EXPECT_EQ(tank.GetChanges(), 0U);
    }
    level.Set(0.0);
    level.Set(10.0);
    EXPECT_EQ(tank.GetChanges(), 2U);
}

TEST(Property, RefusesATextThatIsNoChoiceAndNamesTheChoices) {
    Tank tank;
    Property mode(ModeSchema(), Untyped(tank));
    std::string const error = MessageOf<std::out_of_range>([&] { mode.Set("medium"); });
    for (char const* const part : {"mode", "medium", "fast", "slow"}) {
        EXPECT_NE(error.find(part), std::string::npos) << error;
    }
    EXPECT_EQ(tank.GetChanges(), 0U);
}

TEST(Property, RefusesAValueOfAnotherType) {
    Tank tank;
    Property level(LevelSchema(), Untyped(tank));
    EXPECT_THROW(level.Set(std::int32_t{3}), object::BadCast);
    EXPECT_THROW(level.Set(true), object::BadCast);
    EXPECT_EQ(tank.GetChanges(), 0U);
}

TEST(Property, ThatIsReadOnlyRefusesEveryValueWithItsNameAndTheValue) {
    Tank tank;
    Property changes(ChangesSchema(), Untyped(tank));
    auto const refuse = [&](auto const& value) { return MessageOf<std::logic_error>([&] { changes.Set(value); }); };
    auto const text = [](std::string const& value) {
        return "changes: the value " + value + " cannot be set, the property is read only";
    };
    EXPECT_EQ(refuse(std::uint32_t{7}), text("7"));
    EXPECT_EQ(refuse(static_cast<unsigned char>(65)), text("65"));
    EXPECT_EQ(refuse("many"), text("many"));
    EXPECT_EQ(refuse(2.5), text("2.5"));
    EXPECT_EQ(refuse(true), text("true"));
    EXPECT_EQ(refuse(*Primitive<double>::Make("x", "", 1.0)), text("qel.configuration.node.Double"));
    EXPECT_EQ(changes.Get<std::uint32_t>(), 0U);
}

TEST(Property, PassesOnWhatTheSetterThrowsAndKeepsItsValue) {
    Tank tank;
    Property level(SetOnlySchema(), Untyped(tank));
    level.Set(4.0);
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { level.Set(9.0); }), "the tank does not like 9");
    EXPECT_EQ(level.Get<double>(), 4.0);
}

TEST(Property, WithoutAnOwnerCanBeNeitherReadNorWritten) {
    Property level(LevelSchema(), nullptr, Primitive<double>::Make("level", "", 3.0));
    EXPECT_FALSE(level.IsBound());
    EXPECT_EQ(MessageOf<std::logic_error>([&] { level.GetValue(); }), "level: the property has no owner");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { level.Set(1.0); }), "level: the property has no owner");
    level.Publish();
}

/// A property "level" that is tied to a node, with the calls of its setter and of another handler of the node counted.
class BoundProperty : public testing::Test {
protected:
    /// Whether owner, property and node all hold the value.
    void ExpectEverywhere(double value) {
        EXPECT_EQ(tank_.GetLevel(), value);
        EXPECT_EQ(level_.Get<double>(), value);
        EXPECT_EQ(node_->Get(), value);
    }

    void ExpectCalls(std::uint32_t setter, int events) {
        EXPECT_EQ(tank_.GetChanges() - setterCalls_, setter);
        EXPECT_EQ(events_, events);
        setterCalls_ = tank_.GetChanges();
        events_ = 0;
    }

    Tank tank_;
    std::shared_ptr<Primitive<double>> const node_ = Primitive<double>::Make("level", "", 3.0);
    int events_ = 0;
    std::uint32_t setterCalls_ = 0;
    type::Binding const watch_ = node_->Bind([this](auto const& /*event*/) { ++events_; });
    Property level_{LevelSchema(), Untyped(tank_), node_};
};

TEST_F(BoundProperty, StartsWithTheValueOfItsNode) {
    EXPECT_TRUE(level_.IsBound());
    ExpectEverywhere(3);
    ExpectCalls(1, 0);
}

TEST_F(BoundProperty, FollowsItsNodeWithOneCallAChange) {
    ExpectCalls(1, 0);
    node_->Set(5.0);
    ExpectEverywhere(5);
    ExpectCalls(1, 1);
    node_->Stage(6.0);
    ExpectCalls(0, 0);
    node_->Commit();
    ExpectCalls(0, 0);
    node_->Fire();
    ExpectEverywhere(6);
    ExpectCalls(1, 1);
}

TEST_F(BoundProperty, TellsItsNodeWithOneEventAndWithoutAnEcho) {
    ExpectCalls(1, 0);
    level_.Set(5.0);
    ExpectEverywhere(5);
    ExpectCalls(1, 1);
    level_.Set("6");
    ExpectEverywhere(6);
    ExpectCalls(1, 1);
}

TEST_F(BoundProperty, DoesNotTellItsNodeWhatTheNodeHolds) {
    level_.Set(3.0);
    ExpectCalls(2, 0);
}

TEST_F(BoundProperty, IsNotCalledForAnEventWithoutAChange) {
    ExpectCalls(1, 0);
    node_->Fire();
    ExpectCalls(0, 1);
}

TEST_F(BoundProperty, CanBeUsedByHandlersOfItsNode) {
    std::vector<double> seen;
    auto const reader = node_->Bind([&](auto const& /*event*/) {
        seen.push_back(level_.Get<double>());
        if (seen.back() < 8) level_.Set(seen.back() + 1);
    });
    level_.Set(6.0);
    EXPECT_EQ(seen, (std::vector<double>{6, 7, 8}));
    ExpectEverywhere(8);
}

TEST_F(BoundProperty, PublishesWhatItsOwnerChangedByItselfWithoutAnEcho) {
    tank_.SetLevel(7);
    EXPECT_EQ(node_->Get(), 3.0);
    ExpectCalls(2, 0);
    level_.Publish();
    ExpectEverywhere(7);
    ExpectCalls(0, 1);
    level_.Publish();
    ExpectCalls(0, 0);
    node_->Set(2.0);
    ExpectEverywhere(2);
}

TEST_F(BoundProperty, ASetterThatThrowsLeavesEverythingAsItWas) {
    ExpectCalls(1, 0);
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { level_.Set(9.0); }), "the tank does not like 9");
    ExpectEverywhere(3);
    ExpectCalls(1, 0);
    EXPECT_EQ(node_->GetStaged(), nullptr);
    level_.Set(4.0);
    ExpectEverywhere(4);
}

TEST_F(BoundProperty, ASetterThatThrowsForAChangeOfTheNodeTellsWhoeverMadeIt) {
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { node_->Set(9.0); }), "the tank does not like 9");
    EXPECT_EQ(level_.Get<double>(), 3.0);
    EXPECT_EQ(node_->Get(), 9.0);
    node_->Set(3.0);
    ExpectEverywhere(3);
    level_.Set(4.0);
    ExpectEverywhere(4);
}

TEST_F(BoundProperty, AValueOfTheNodeThatIsNotAllowedTellsWhoeverSetIt) {
    ExpectCalls(1, 0);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node_->Set(11.0); }),
              "level: the value 11 is out of the range 0 to 10");
    EXPECT_EQ(level_.Get<double>(), 3.0);
    ExpectCalls(0, 1);
}

TEST_F(BoundProperty, OfAFrozenNodeCannotBeSet) {
    node_->Freeze(configuration::node::Freeze::Frozen);
    EXPECT_THROW(level_.Set(5.0), std::logic_error);
    ExpectEverywhere(3);
    ExpectCalls(1, 0);
    node_->Freeze(configuration::node::Freeze::Thawed);
    level_.Set(5.0);
    ExpectEverywhere(5);
}

TEST(Property, RefusesWhatItsNodeRefuses) {
    Tank tank;
    auto const node = Primitive<double>::Make("level", "", 3.0, {}, Range{2.0, 4.0});
    Property level(LevelSchema(), Untyped(tank), node);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { level.Set(5.0); }), "level: the value 5 is out of the range 2 to 4");
    EXPECT_EQ(tank.GetLevel(), 3);
    EXPECT_EQ(tank.GetChanges(), 1U);
}

TEST(Property, RefusesANodeOfAnotherType) {
    Tank tank;
    auto const node = Primitive<std::string>::Make("level", "", "3");
    EXPECT_EQ(MessageOf<object::BadCast>([&] { Property(LevelSchema(), Untyped(tank), node); }),
              "Failed to cast the runtime object from 'qel.configuration.node.String' to a "
              "'qel.configuration.node.Double'");
    EXPECT_EQ(tank.GetChanges(), 0U);
}

TEST(Property, IsNotMadeWhenItsOwnerRefusesTheValueOfTheNode) {
    Tank tank;
    auto const node = Primitive<double>::Make("level", "", 9.0);
    EXPECT_THROW(Property(LevelSchema(), Untyped(tank), node), std::runtime_error);
    node->Set(5.0);
    EXPECT_EQ(tank.GetChanges(), 1U);
}

TEST(Property, OfChoicesIsTiedToADynamicEnum) {
    Tank tank;
    auto const node = DynamicEnum::Make("mode", {"fast", "slow"}, "slow", "");
    Property mode(ModeSchema(), Untyped(tank), node);
    EXPECT_EQ(tank.GetMode(), "slow");
    node->Set(std::string("fast"));
    EXPECT_EQ(mode.Get<std::string>(), "fast");
    mode.Set("slow");
    EXPECT_EQ(node->Get(), "slow");
}

TEST(Property, ThatIsReadOnlyTellsItsNodeAndTakesNothingFromIt) {
    Tank tank;
    tank.SetLevel(1);
    auto const node = Primitive<std::uint32_t>::Make("changes", "", 40);
    Property changes(ChangesSchema(), Untyped(tank), node);
    EXPECT_EQ(node->Get(), 1U);
    node->Set(77U);
    EXPECT_EQ(changes.Get<std::uint32_t>(), 1U);
    changes.Publish();
    EXPECT_EQ(node->Get(), 1U);
}

TEST(Property, LetsGoOfItsNodeWhenItGoes) {
    Tank tank;
    auto const node = Primitive<double>::Make("level", "", 3.0);
    { Property const level(LevelSchema(), Untyped(tank), node); }
    node->Set(5.0);
    EXPECT_EQ(tank.GetLevel(), 3.0);
    EXPECT_EQ(node.use_count(), 1);
}

}  // namespace
}  // namespace qel::property
