#include "qel/configuration/node.hpp"

#include <stdexcept>
#include <type_traits>

#include <cereal/archives/json.hpp>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "support/message_of.hpp"

namespace qel::configuration {
namespace {

using node::Map;
using node::Vector;
using test::MessageOf;
using Byte = node::Primitive<unsigned char>;

static_assert(std::is_same_v<decltype(std::declval<Node&>().GetPtr<Map>()), std::shared_ptr<Map>>);
static_assert(std::is_same_v<decltype(std::declval<Node const&>().GetPtr<Map>()), std::shared_ptr<Map const>>);
static_assert(static_cast<int>(node::Freeze::Frozen) == 0);
static_assert(node::binding::Options{node::binding::Option::CallNow}.GetValue() == 1);

TEST(NodePath, JoinsTheNamesBelowTheRoot) {
    auto const root = Map::Make("root"), algorithms = Map::Make("algorithms"), info = Map::Make("info");
    auto const node = Byte::Make("size", "", 1);
    info->Insert(node);
    algorithms->Insert(info);
    root->Insert(algorithms);
    EXPECT_EQ(node->GetPath(root), "algorithms.info.size");
    EXPECT_EQ(node->GetPath(algorithms), "info.size");
    EXPECT_EQ(node->GetPath(info), "size");
    EXPECT_EQ(node->GetPath(node), "");
    EXPECT_EQ(root->GetPath(root), "");
}

TEST(NodePath, ReachesFromTheTopWithoutARoot) {
    auto const root = Map::Make("root"), unnamed = Map::Make("");
    auto const node = Byte::Make("size", "", 1);
    EXPECT_EQ(node->GetPath(), "size");
    root->Insert(node);
    EXPECT_EQ(node->GetPath(), "root.size");
    EXPECT_EQ(node->GetPath(nullptr), "root.size");
    EXPECT_EQ(node->GetPath(unnamed), "root.size") << "a root that is not above the node does not count";
    EXPECT_EQ(root->GetPath(node), "root");
    EXPECT_EQ(root->GetPath(), "root");
    auto const other = Byte::Make("other", "", 1);
    unnamed->Insert(other);
    EXPECT_EQ(other->GetPath(), "other");
    EXPECT_EQ(unnamed->GetPath(), "");
}

TEST(NodePath, WritesElementsWithTheirIndex) {
    auto const root = Map::Make("root"), info = Map::Make("info");
    auto const classes = Vector::Make("classes");
    info->Insert(classes);
    root->Insert(info);
    classes->Add({{"", "car"}, {"named", "person"}});
    EXPECT_EQ(classes->Find(0)->GetPath(root), "info.classes[0]");
    EXPECT_EQ(classes->Find(1)->GetPath(root), "info.classes[1]");
    EXPECT_EQ(classes->Find(1)->GetPath(classes), "[1]");
    EXPECT_EQ(classes->Find(1)->GetPath(), "root.info.classes[1]");
}

TEST(NodePath, StopsWhereTheParentIsGone) {
    auto const node = Byte::Make("size", "", 1);
    {
        auto const root = Map::Make("root");
        root->Insert(node);
        EXPECT_EQ(node->GetParent(), root);
    }
    EXPECT_EQ(node->GetParent(), nullptr);
    EXPECT_EQ(node->GetPath(), "size");
    auto const another = Map::Make("another");
    another->Insert(node);
    EXPECT_EQ(node->GetPath(), "another.size");
}

TEST(NodePtr, CastsToTheTypeOfTheNode) {
    std::shared_ptr<Node> const node = Byte::Make("size", "", 1);
    EXPECT_EQ(node->GetPtr(), node);
    EXPECT_EQ(node->GetPtr<Byte>(), node);
    EXPECT_EQ(node->GetPtr<node::Value>(), node);
    EXPECT_EQ(Node::GetPtr<Byte>(node), node);
    std::shared_ptr<Node const> const constant = node;
    EXPECT_EQ(constant->GetPtr<Byte>(), node);
    EXPECT_EQ(Node::GetPtr<Byte>(constant), node);
    EXPECT_TRUE(node->Is<node::Value>());
    EXPECT_FALSE(node->Is<Map>());
}

TEST(NodePtr, ToAnotherTypeIsABadCast) {
    std::shared_ptr<Node> const node = Byte::Make("size", "", 1);
    std::string const message =
        "Failed to cast the runtime object from 'qel.configuration.node.UInt8' to a 'qel.configuration.node.Map'";
    EXPECT_EQ(MessageOf<object::BadCast>([&] { node->GetPtr<Map>(); }), message);
    EXPECT_EQ(MessageOf<object::BadCast>([&] { Node::GetPtr<Map>(node); }), message);
    EXPECT_STREQ(node->BadCastError("qel.configuration.node.Map").what(), message.c_str());
    EXPECT_STREQ(Node::BadCastError(*node, "qel.configuration.node.Map").what(), message.c_str());
    EXPECT_EQ(MessageOf<object::BadCast>([&] { node->GetPtr<Vector>(); }),
              "Failed to cast the runtime object from 'qel.configuration.node.UInt8' to a "
              "'qel.configuration.node.Vector'");
    EXPECT_EQ(MessageOf<object::BadCast>([] { Map::Make("a")->GetPtr<node::Value>(); }),
              "Failed to cast the runtime object from 'qel.configuration.node.Map' to a "
              "'qel.configuration.node.Value'");
    EXPECT_EQ(MessageOf<object::BadCast>([] { Map::Make("a")->GetPtr<node::Dynamic>(); }),
              "Failed to cast the runtime object from 'qel.configuration.node.Map' to a "
              "'qel.configuration.node.Dynamic'");
}

TEST(NodePtr, OfAMissingNodeIsABadCast) {
    EXPECT_EQ(MessageOf<object::BadCast>([] { Node::GetPtr<Vector>(Map::Make("a")->Find("classes")); }),
              "Failed to cast the runtime object from 'null' to a 'qel.configuration.node.Vector'");
}

TEST(NodePtr, NeedsANodeInASharedPointer) {
    Byte node("size", "", 1);
    EXPECT_THROW(node.GetPtr(), std::bad_weak_ptr);
}

class FreezeTest : public testing::Test {
protected:
    FreezeTest() {
        root->Insert(map);
        map->Insert(node);
        map->Insert(classes);
        classes->Add({{"", "car"}});
        node->Stage(2);
        root->Freeze(node::Freeze::Frozen);
    }

    std::shared_ptr<Map> const root = Map::Make("root");
    std::shared_ptr<Map> const map = Map::Make("map");
    std::shared_ptr<Byte> const node = Byte::Make("size", "", 1);
    std::shared_ptr<Vector> const classes = Vector::Make("classes");
};

TEST_F(FreezeTest, ForbidsEveryChangeOfANodeAndAllBelowIt) {
    EXPECT_TRUE(root->IsFrozen() && map->IsFrozen() && node->IsFrozen() && classes->Find(0)->IsFrozen());
    auto const error = [](auto const& action) { return MessageOf<std::logic_error>(action); };
    std::string const end = ": the configuration node is frozen";
    EXPECT_EQ(error([&] { node->Set(3); }), "root.map.size" + end);
    EXPECT_EQ(error([&] { node->Stage(3); }), "root.map.size" + end);
    EXPECT_EQ(error([&] { node->Copy(*Byte::Make("a", "", 3)); }), "root.map.size" + end);
    EXPECT_EQ(error([&] { json::Stage(*node, R"({"size": 3})"); }), "root.map.size" + end);
    EXPECT_EQ(error([&] { root->Set("map.size", static_cast<unsigned char>(3)); }), "root.map.size" + end);
    EXPECT_EQ(error([&] { map->Insert(Byte::Make("b", "", 1)); }), "root.map" + end);
    EXPECT_EQ(error([&] { map->Schema({Schema("b", "", 1)}); }), "root.map" + end);
    EXPECT_EQ(error([&] { classes->Add({{"", "person"}}); }), "root.map.classes" + end);
    EXPECT_EQ(error([&] { json::Stage(*classes, R"({"classes": []})"); }), "root.map.classes" + end);
    EXPECT_EQ(error([&] { json::Stage(*root, R"({"map": {}})"); }), "root" + end);
    EXPECT_EQ(node->Get(), 1);
    EXPECT_EQ(map->GetChildren().size(), 2U);
    EXPECT_EQ(classes->GetSize(), 1U);
}

TEST_F(FreezeTest, DropsWhatWasStaged) {
    EXPECT_EQ(node->GetStaged(), nullptr);
    root->Commit();
    EXPECT_EQ(node->Get(), 1);
}

TEST_F(FreezeTest, LetsReadingBindingAndFiringGoOn) {
    int calls = 0;
    auto const binding = node->Bind([&](auto const&) { ++calls; });
    node->Fire();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(root->Find("map.size"), node);
    EXPECT_EQ(json::Data(*root), R"({"map": {"size": 1,"classes": ["car"]}})");
}

TEST_F(FreezeTest, IsEndedByThawing) {
    root->Freeze(node::Freeze::Thawed);
    EXPECT_FALSE(root->IsFrozen() || node->IsFrozen() || classes->Find(0)->IsFrozen());
    node->Set(3);
    classes->Add({{"", "person"}});
    map->Insert(Byte::Make("b", "", 1));
    EXPECT_EQ(json::Data(*root), R"({"map": {"size": 3,"classes": ["car","person"],"b": 1}})");
}

TEST_F(FreezeTest, GoesAlongWhenTheNodeIsInserted) {
    auto const parent = Map::Make("parent");
    parent->Insert(root);
    EXPECT_FALSE(parent->IsFrozen());
    EXPECT_EQ(MessageOf<std::logic_error>([&] { parent->Set("root.map.size", static_cast<unsigned char>(3)); }),
              "parent.root.map.size: the configuration node is frozen");
}

}  // namespace
}  // namespace qel::configuration
