#include "qel/property/schema.hpp"

#include <cstdint>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "property/tank.hpp"
#include "support/message_of.hpp"

namespace qel::property {
namespace {

using configuration::Property;
using configuration::Range;
using configuration::Validator;
using configuration::node::Option;
using qel::test::MessageOf;
using test::Base;
using test::Tank;

configuration::Schema Level(double standard = 1.0, Validator limits = Range{0.0, 10.0}) {
    return {"level", "how full", standard, {}, std::move(limits)};
}

void Ignore(void* /*owner*/, object::Object const& /*node*/) {}

std::shared_ptr<object::Object const> Seven(void const* /*owner*/) { return object::Make(7.0); }

TEST(PropertySchema, HoldsItsDescriptionAndFunctions) {
    Schema const schema(Level(), Ignore, Seven);
    EXPECT_EQ(schema.GetName(), "level");
    EXPECT_EQ(schema.GetValue().GetDescription(), "how full");
    EXPECT_TRUE(schema.GetSetter());
    EXPECT_EQ(schema.GetGetter()(nullptr)->As<object::Primitive<double>>().Get(), 7.0);
    EXPECT_FALSE(schema.IsReadOnly());
}

TEST(PropertySchema, IsReadOnlyWithoutASetterOrWithTheOption) {
    EXPECT_TRUE(Schema(Level(), {}, Seven).IsReadOnly());
    EXPECT_TRUE(Schema({"level", "", 1.0, {Option::ReadOnly}}, Ignore).IsReadOnly());
    EXPECT_FALSE(Schema({"level", "", 1.0, {Option::Transient}}, Ignore).IsReadOnly());
}

TEST(PropertySchema, RefusesAValueWithoutADefault) {
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Schema(configuration::Schema("level", ""), Ignore); }),
              "level: the property has no default");
}

TEST(PropertySchema, IsMadeOfAConfigurationPropertyByItsSchemaOfTheSameName) {
    Property const property{"level", {{"other", "", 1}, Level(), {"level.more", "", 2}}, Ignore};
    Schema const schema(property);
    EXPECT_EQ(schema.GetName(), "level");
    EXPECT_EQ(schema.GetValue().GetDescription(), "how full");
    EXPECT_TRUE(schema.GetSetter());
    EXPECT_FALSE(schema.GetGetter());
    EXPECT_TRUE(Schema(Property{"level", {Level()}, {}}).IsReadOnly());
}

TEST(PropertySchema, RefusesAConfigurationPropertyWithoutASchemaOfItsName) {
    EXPECT_EQ(MessageOf<std::invalid_argument>([] {
                  Schema(Property{"level", {{"other", "", 1}}, Ignore});
              }),
              "level: the property has no schema of its own name");
    EXPECT_THROW(Schema(Property{"level", {}, Ignore}), std::invalid_argument);
}

TEST(PropertySchema, EqualityComparesAllOfTheDescription) {
    struct Case {
        char const* name;
        Schema other;
        bool equal;
    };
    Case const cases[] = {
        {"the same", {Level(), Ignore, Seven}, true},
        {"other functions", {Level(), [](void*, object::Object const&) {}, Seven}, true},
        {"no setter", {Level(), {}, Seven}, false},
        {"no getter", {Level(), Ignore}, false},
        {"another name", {{"depth", "how full", 1.0, {}, Range{0.0, 10.0}}, Ignore, Seven}, false},
        {"another description", {{"level", "how deep", 1.0, {}, Range{0.0, 10.0}}, Ignore, Seven}, false},
        {"another default", {Level(2.0), Ignore, Seven}, false},
        {"another type", {{"level", "how full", 1, {}, Range{0.0, 10.0}}, Ignore, Seven}, false},
        {"another option", {{"level", "how full", 1.0, {Option::Transient}, Range{0.0, 10.0}}, Ignore, Seven}, false},
        {"another minimum", {Level(1.0, Range{0.5, 10.0}), Ignore, Seven}, false},
        {"another maximum", {Level(1.0, Range{0.0, 11.0}), Ignore, Seven}, false},
        {"no limits", {Level(1.0, {}), Ignore, Seven}, false},
    };
    Schema const schema(Level(), Ignore, Seven);
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(schema == c.other, c.equal);
        EXPECT_EQ(c.other == schema, c.equal);
    }
}

TEST(PropertySchema, EqualityComparesChoicesAndPatterns) {
    auto const choice = [](std::set<std::string> choices) {
        return Schema({"mode", "", "fast", {}, std::move(choices)}, Ignore);
    };
    EXPECT_EQ(choice({"fast", "slow"}), choice({"fast", "slow"}));
    EXPECT_FALSE(choice({"fast", "slow"}) == choice({"fast"}));
    auto const text = [](char const* pattern) {
        return Schema({"mode", "", "fast", {}, Validator::Pattern(pattern)}, {});
    };
    EXPECT_EQ(text("f"), text("f"));
    EXPECT_FALSE(text("f") == text("fa"));
    EXPECT_FALSE(text("f") == Schema({"mode", "", "fast"}, {}));
}

TEST(PropertySchema, OfMembersReadsAndWritesThroughTheBaseOfTheOwner) {
    Tank tank;
    void* const owner = static_cast<Base*>(&tank);
    ASSERT_NE(owner, static_cast<void*>(&tank));
    Schema const schema = test::LevelSchema();
    schema.GetSetter()(owner, *schema.GetValue().Make("level"));
    EXPECT_EQ(tank.GetLevel(), 1.0);
    tank.SetLevel(4.5);
    EXPECT_EQ(schema.GetGetter()(owner)->As<object::Primitive<double>>().Get(), 4.5);
    EXPECT_EQ(schema.GetValue().GetValidator().GetMaximum(), 10.0L);
    EXPECT_FALSE(schema.IsReadOnly());
}

TEST(PropertySchema, OfAGetterAloneIsReadOnly) {
    Tank tank;
    Schema const schema = test::ChangesSchema();
    EXPECT_TRUE(schema.IsReadOnly());
    tank.SetLevel(3);
    EXPECT_EQ(schema.GetGetter()(static_cast<Base*>(&tank))->As<object::Primitive<std::uint32_t>>().Get(), 1U);
}

}  // namespace
}  // namespace qel::property
