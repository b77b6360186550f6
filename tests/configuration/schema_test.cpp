#include "qel/configuration/schema.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "support/message_of.hpp"

namespace qel::configuration {
namespace {

using node::Map;
using node::Options;
using node::Vector;
using test::MessageOf;

TEST(Schema, HoldsWhatItDescribes) {
    Schema const schema("a.b", "A number", 2.5, Options(10), Range{1.0, 10.0});
    EXPECT_EQ(schema.GetPath(), "a.b");
    EXPECT_EQ(schema.GetDescription(), "A number");
    EXPECT_EQ(schema.GetOptions().GetValue(), 10);
    EXPECT_EQ(schema.GetDefault()->As<object::Primitive<double>>().Get(), 2.5);
    EXPECT_EQ(schema.GetValidator().GetMinimum(), 1);
    EXPECT_FALSE(schema.GetChoices());
    Schema const choice("state", "A state", "x", Options(10), {"x", "y"});
    EXPECT_EQ(choice.GetChoices(), (std::set<std::string>{"x", "y"}));
    EXPECT_EQ(Schema("a", "").GetDefault(), nullptr);
    EXPECT_TRUE(Schema("a", "").GetOptions().IsEmpty());
}

TEST(Schema, RefusesAPathWithAnEmptyNameOrAnIndex) {
    for (std::string const path :
         {"", ".", ".a", "a.", "a..b", "[*]", "a.[*]", "a[0]", "a[*].b", "a[*][*]", "a]", "[*]a"}) {
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Schema(path, ""); }),
                  "The schema path '" + path + "' is not names joined by dots, perhaps with [*] at the end");
    }
}

TEST(Schema, RefusesADefaultThatIsNotAllowed) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] {
                  Schema("a.b", "", 11, {}, Range{1, 10});
              }),
              "a.b: the value 11 is out of the range 1 to 10");
    EXPECT_EQ(MessageOf<std::out_of_range>([] {
                  Schema("a", "", "z", Options(), {"x", "y"});
              }),
              "a: the value 'z' is not one of the choices 'x', 'y'");
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Schema("a", "", 11, {}, Validator::Pattern("1")); }),
              "a: the validator is not one for values of type integer");
}

TEST(MapSchema, MakesNodesOfTheTypesOfTheDefaults) {
    auto const map = Map::Make("map");
    map->Schema({Schema("text", "", std::string("a")), Schema("literal", "", "b"), Schema("on", "", true),
                 Schema("byte", "", static_cast<unsigned char>(1)), Schema("int32", "", 2),
                 Schema("int64", "", std::int64_t{3}), Schema("uint32", "", 4U), Schema("real", "", 5.5),
                 Schema("state", "", "x", {}, {"x", "y"}), Schema("group", "A group")});
    char const* const names[] = {"String", "String", "Bool",   "UInt8",       "Int32",
                                 "Int64",  "UInt32", "Double", "DynamicEnum", "Map"};
    auto const children = map->GetChildren();
    ASSERT_EQ(children.size(), std::size(names));
    for (std::size_t i = 0; i < children.size(); ++i) {
        EXPECT_EQ(children[i]->GetTypeName(), std::string("qel.configuration.node.") + names[i]);
    }
    EXPECT_EQ(json::Data(*map),
              R"({"text": "a","literal": "b","on": true,"byte": 1,"int32": 2,"int64": 3,"uint32": 4,"real": 5.5,)"
              R"("state": "x","group": {}})");
    EXPECT_EQ(map->Find("group")->GetDescription(), "A group");
}

TEST(MapSchema, GivesNodesDescriptionOptionsAndLimits) {
    auto const map = Map::Make("map");
    map->Schema({Schema("size", "How large", 5, Options(10), Range{1, 10})});
    auto const node = Node::GetPtr<node::Primitive<std::int32_t>>(map->Find("size"));
    EXPECT_EQ(node->GetName(), "size");
    EXPECT_EQ(node->GetDescription(), "How large");
    EXPECT_EQ(node->GetOptions().GetValue(), 10);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(11); }),
              "map.size: the value 11 is out of the range 1 to 10");
}

TEST(MapSchema, BringsTheMapsOfAPathIntoBeing) {
    auto const map = Map::Make("map");
    map->Schema({Schema("a.b.c", "", 1, Options(2)), Schema("a.b.d", "", 2)});
    EXPECT_EQ(json::Data(*map), R"({"a": {"b": {"c": 1,"d": 2}}})");
    EXPECT_EQ(map->Find("a.b")->GetOptions().GetValue(), 2);
    EXPECT_EQ(map->Find("a.b")->GetDescription(), "");
}

TEST(MapSchema, BringsAnEmptyVectorIntoBeing) {
    auto const map = Map::Make("map");
    map->Schema({Schema("classes[*]", "A class", Options(10)), Schema("a.numbers[*]", "", 1.5)});
    auto const classes = Node::GetPtr<Vector>(map->Find("classes"));
    EXPECT_EQ(classes->GetSize(), 0U);
    EXPECT_EQ(classes->GetName(), "classes");
    EXPECT_EQ(classes->GetOptions().GetValue(), 10);
    classes->Add({{"", "car"}});
    EXPECT_EQ(classes->Find(0)->GetDescription(), "A class");
    EXPECT_EQ(classes->Find(0)->GetOptions().GetValue(), 10);
    Node::GetPtr<Vector>(map->Find("a.numbers"))->Add({{"", "2.5"}});
    EXPECT_EQ(json::Data(*map), R"({"classes": ["car"],"a": {"numbers": [2.5]}})");
}

TEST(MapSchema, LeavesNodesThatExistAsTheyAre) {
    auto const map = Map::Make("map");
    std::vector<Schema> const schemas = {Schema("size", "", 5), Schema("classes[*]", ""), Schema("group.on", "", true)};
    map->Schema(schemas);
    map->Set("size", 6);
    Node::GetPtr<Vector>(map->Find("classes"))->Add({{"", "car"}});
    map->Schema(schemas);
    EXPECT_EQ(json::Data(*map), R"({"size": 6,"classes": ["car"],"group": {"on": true}})");
}

TEST(MapSchema, RefusesANodeOfAnotherType) {
    auto const map = Map::Make("map");
    map->Schema({Schema("size", "", 5)});
    auto const error = [&](std::vector<Schema> const& schemas) {
        return MessageOf<std::invalid_argument>([&] { map->Schema(schemas); });
    };
    EXPECT_EQ(error({Schema("first", "", 1), Schema("size", "", 5.0)}),
              "map.size: the schema describes a 'qel.configuration.node.Double', the node is a "
              "'qel.configuration.node.Int32'");
    EXPECT_NE(map->Find("first"), nullptr);
    EXPECT_EQ(error({Schema("size[*]", "")}),
              "map.size: the schema describes a 'qel.configuration.node.Vector', the node is a "
              "'qel.configuration.node.Int32'");
    EXPECT_EQ(error({Schema("size.a", "", 1)}),
              "map.size: the schema describes a 'qel.configuration.node.Map', the node is a "
              "'qel.configuration.node.Int32'");
}

TEST(MapSchema, IsWrittenWithTheDescriptionsOfTheChildren) {
    auto const map = Map::Make("map", "not written here", Options({node::Option::ReadOnly}));
    map->Schema({Schema("size", "How large", 5, {}, Range{1, 10}), Schema("classes[*]", "A class", Options(10)),
                 Schema("group", "A group"), Schema("group.on", "", true)});
    EXPECT_EQ(json::Schema(*map),
              R"({"type": "object","properties": {)"
              R"("size": {"description": "How large","type": "integer","default": 5,"minimum": 1,"maximum": 10},)"
              R"("classes": {"type": "array","items": {"description": "A class"},"readOnly": true},)"
              R"("group": {"description": "A group","type": "object","properties": {)"
              R"("on": {"type": "boolean","default": true}}}},"readOnly": true})");
    EXPECT_EQ(json::Schema(*Map::Make("empty")), R"({"type": "object","properties": {}})");
}

}  // namespace
}  // namespace qel::configuration
