#include "qel/configuration/property.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "support/message_of.hpp"

namespace qel::configuration {
namespace {

using test::MessageOf;

struct Base {
    virtual ~Base() = default;
    int base = 1;
};

struct Other {
    virtual ~Other() = default;
    int other = 2;
};

// Base does not come first: a pointer to it is another address than one to the whole object.
class Motion : public Other, public Base {
public:
    void SetThreshold(double value) { threshold = value; }
    void SetMode(std::string const& value) noexcept { mode = value; }
    void SetOn(bool value) { on = value; }
    void SetSize(unsigned char value) { size = value; }

    double threshold = 0;
    std::string mode;
    bool on = false;
    unsigned char size = 0;
};

// Makes the nodes of a property in a map and binds its setter, as the owner of an algorithm does.
type::Binding Bind(Property const& property, node::Map& map, Base* object) {
    map.Schema(property.schemas);
    return map.Find(property.name)
        ->Bind([=, setter = property.setter](auto const& event) { setter(object, event->GetNode()); },
               node::binding::Options{node::binding::Option::CallNow});
}

TEST(Property, SetsANumberWithinItsRange) {
    auto const property = MakeProperty<Motion, Base>("threshold", "How far from the background", 2.5, Range{1.0, 10.0},
                                                     &Motion::SetThreshold);
    EXPECT_EQ(property.name, "threshold");
    ASSERT_EQ(property.schemas.size(), 1U);
    EXPECT_EQ(property.schemas[0].GetPath(), "threshold");
    EXPECT_EQ(property.schemas[0].GetDescription(), "How far from the background");
    EXPECT_TRUE(property.schemas[0].GetOptions().IsEmpty());
    Motion motion;
    auto const map = node::Map::Make("motion");
    auto const binding = Bind(property, *map, &motion);
    EXPECT_EQ(motion.threshold, 2.5);
    map->Set("threshold", "7.5");
    EXPECT_EQ(motion.threshold, 7.5);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { map->Set("threshold", 0.5); }),
              "motion.threshold: the value 0.5 is out of the range 1 to 10");
    EXPECT_EQ(motion.threshold, 7.5);
}

TEST(Property, SetsATextABoolAChoice) {
    std::vector<Property> const properties = {
        MakeProperty<Motion, Base>("mode", "Any text", "plain", &Motion::SetMode),
        MakeProperty<Motion, Base>("on", "", true, &Motion::SetOn, {node::Option::Transient}),
        MakeProperty<Motion, Base>("size", "", static_cast<unsigned char>(3), Validator::Maximum(9), &Motion::SetSize),
    };
    Motion motion;
    auto const map = node::Map::Make("motion");
    std::vector<type::Binding> bindings;
    for (Property const& property : properties) bindings.push_back(Bind(property, *map, &motion));
    EXPECT_EQ(motion.mode, "plain");
    EXPECT_TRUE(motion.on);
    EXPECT_EQ(motion.size, 3);
    EXPECT_EQ(map->Find("on")->GetOptions().GetValue(), 2);

    auto const choice = MakeProperty<Motion, Base>("choice", "", "a", {"a", "b"}, &Motion::SetMode);
    bindings.push_back(Bind(choice, *map, &motion));
    EXPECT_EQ(motion.mode, "a");
    map->Set("choice", "b");
    EXPECT_EQ(motion.mode, "b");
    EXPECT_EQ(json::Schema(*map->Find("choice")), R"({"type": "string","default": "a","enum": ["a","b"]})");
}

TEST(Property, TakesAnyCallable) {
    auto const property =
        MakeProperty<Motion>("size", "", 4, [](Motion& motion, std::int32_t value) { motion.threshold = value; });
    Motion motion;
    auto const node = node::Primitive<std::int32_t>::Make("size", "", 6);
    property.setter(&motion, *node);
    EXPECT_EQ(motion.threshold, 6);
}

TEST(Property, RefusesANodeOfAnotherType) {
    auto const property = MakeProperty<Motion>("on", "", true, &Motion::SetOn);
    Motion motion;
    EXPECT_EQ(MessageOf<object::BadCast>(
                  [&] { property.setter(&motion, *node::Primitive<std::int32_t>::Make("on", "", 6)); }),
              "Failed to cast the runtime object from 'qel.configuration.node.Int32' to a "
              "'qel.configuration.node.Bool'");
    EXPECT_FALSE(motion.on);
}

TEST(Property, PassesOnWhatTheSetterThrows) {
    auto const property = MakeProperty<Motion>("on", "", true, [](Motion&, bool) { throw std::runtime_error("no"); });
    Motion motion;
    EXPECT_EQ(
        MessageOf<std::runtime_error>([&] { property.setter(&motion, *node::Primitive<bool>::Make("on", "", true)); }),
        "no");
}

TEST(Property, RefusesADefaultOutOfItsRange) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] {
                  MakeProperty<Motion>("threshold", "", 0.5, Range{1, 10}, &Motion::SetThreshold);
              }),
              "threshold: the value 0.5 is out of the range 1 to 10");
}

}  // namespace
}  // namespace qel::configuration
