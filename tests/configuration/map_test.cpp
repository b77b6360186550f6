#include "qel/configuration/node/map.hpp"

#include <stdexcept>

#include <cereal/archives/json.hpp>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "support/message_of.hpp"

namespace qel::configuration::node {
namespace {

using test::MessageOf;
using Byte = Primitive<unsigned char>;
using Text = Primitive<std::string>;

TEST(Map, IsMadeEmpty) {
    auto const map = Map::Make("info", "About it", Options(10));
    EXPECT_STREQ(map->GetTypeName(), "qel.configuration.node.Map");
    EXPECT_EQ(map->GetName(), "info");
    EXPECT_EQ(map->GetDescription(), "About it");
    EXPECT_EQ(map->GetOptions().GetValue(), 10);
    EXPECT_TRUE(map->GetChildren().empty());
    EXPECT_TRUE(map->Is<Map>());
    EXPECT_FALSE(map->Is<Value>());
    Map::Timestamp const then(std::chrono::seconds(5));
    EXPECT_EQ(std::make_shared<Map>("a", "", Options(), then)->GetTimestamp(), then);
}

TEST(Map, FindsNodesByDottedPath) {
    auto const root = Map::Make("root"), algorithms = Map::Make("algorithms"), info = Map::Make("info");
    auto const node = Byte::Make("size", "", 1);
    info->Insert(node);
    algorithms->Insert(info);
    root->Insert(algorithms);
    EXPECT_EQ(root->Find("algorithms"), algorithms);
    EXPECT_EQ(root->Find("algorithms.info"), info);
    EXPECT_EQ(root->Find("algorithms.info.size"), node);
    for (char const* const path :
         {"", ".", "info", "algorithms.", ".algorithms", "algorithms..info", "algorithms.info.s",
          "algorithms.info.size.x", "root", "Algorithms", "algorithms.info.size[0]"}) {
        EXPECT_EQ(root->Find(path), nullptr) << path;
    }
}

TEST(Map, FindsElementsByTheirIndex) {
    auto const root = Map::Make("root"), info = Map::Make("info");
    auto const classes = Vector::Make("classes");
    root->Insert(info);
    info->Insert(classes);
    classes->Add({{"", "car"}, {"", "person"}});
    EXPECT_EQ(root->Find("info.classes[0]"), classes->Find(0));
    EXPECT_EQ(root->Find("info.classes[1]"), classes->Find(1));
    EXPECT_EQ(root->Find(classes->Find(1)->GetPath(root)), classes->Find(1));
    for (char const* const path :
         {"info.classes[2]", "info.classes[-1]", "info.classes[]", "info.classes[x]", "info.classes[0",
          "info.classes[0]x", "info[0]", "[0]", "info.classes[ 0]", "info.classes[99999999999999999999]", "]"}) {
        EXPECT_EQ(root->Find(path), nullptr) << path;
    }
}

TEST(Map, FindsAChildWhoseNameHoldsDots) {
    auto const root = Map::Make("root"), plain = Map::Make("qel"), dotted = Map::Make("qel.Motion");
    auto const node = Byte::Make("size", "", 1), other = Byte::Make("Other", "", 1);
    root->Insert(plain);
    root->Insert(dotted);
    dotted->Insert(node);
    plain->Insert(other);
    EXPECT_EQ(root->Find("qel.Motion"), dotted);
    EXPECT_EQ(root->Find("qel.Motion.size"), node);
    EXPECT_EQ(root->Find("qel.Other"), other);
}

TEST(MapInsert, AppendsTheChildAndFires) {
    auto const map = Map::Make("map");
    auto const made = map->GetTimestamp();
    int calls = 0;
    auto const binding = map->Bind([&](auto const& event) {
        EXPECT_EQ(&event->GetNode(), map.get());
        ++calls;
    });
    auto const b = Byte::Make("b", "", 1), a = Byte::Make("a", "", 1);
    map->Insert(b);
    map->Insert(a);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(map->GetChildren(), (std::vector<std::shared_ptr<Node>>{b, a})) << "in the order of insertion";
    EXPECT_EQ(a->GetParent(), map);
    EXPECT_GT(map->GetTimestamp(), made);
}

TEST(MapInsert, RefusesWhatCannotBeAChild) {
    auto const map = Map::Make("map"), below = Map::Make("below"), other = Map::Make("other");
    map->Insert(below);
    auto const error = [&](Map& target, std::shared_ptr<Node> const& child) {
        return MessageOf<std::invalid_argument>([&] { target.Insert(child); });
    };
    EXPECT_EQ(error(*map, nullptr), "map.?: there is no node to insert");
    EXPECT_EQ(error(*map, Map::Make("")), "map.?: a node without a name cannot be inserted");
    EXPECT_EQ(error(*map, Byte::Make("below", "", 1)), "map.below: the name is taken");
    EXPECT_EQ(error(*other, below), "map.below: the node is part of a tree already");
    EXPECT_EQ(error(*below, map), "map.below: a node cannot become a child of a node below it");
    EXPECT_EQ(error(*map, map), "map: a node cannot become a child of a node below it");
    EXPECT_EQ(map->GetChildren().size(), 1U);
    EXPECT_TRUE(other->GetChildren().empty());
    EXPECT_TRUE(below->GetChildren().empty());
}

TEST(MapInsert, FreesARefusedSubtree) {
    auto const map = Map::Make("map");
    map->Insert(Byte::Make("a", "", 1));
    std::weak_ptr<Node> refused;
    auto const insert = [&] {
        auto subtree = Map::Make("a");
        subtree->Insert(Byte::Make("b", "", 1));
        refused = subtree;
        map->Insert(std::move(subtree));
    };
    EXPECT_EQ(MessageOf<std::invalid_argument>(insert), "map.a: the name is taken");
    EXPECT_TRUE(refused.expired());
}

TEST(MapInsert, FreesARefusedNodeAboveTheMap) {
    auto const below = Map::Make("below");
    auto top = Map::Make("top");
    top->Insert(below);
    std::weak_ptr<Node> const refused = top;
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] { below->Insert(std::move(top)); }),
              "top.below: a node cannot become a child of a node below it");
    EXPECT_TRUE(refused.expired());
    EXPECT_EQ(below->GetParent(), nullptr);
}

TEST(MapInsert, AsksThePredicate) {
    std::shared_ptr<Map> map;
    auto const isValue = [&](Node const& node) {
        map->GetChildren();  // not under the lock
        return node.Is<Value>();
    };
    map = std::make_shared<Map>("map", "", Options(), Map::Timestamp(), isValue);
    map->Insert(Byte::Make("a", "", 1));
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] { map->Insert(Map::Make("b")); }),
              "map.b: the map does not take this node");
    EXPECT_EQ(map->GetChildren().size(), 1U);
}

TEST(MapExchange, TakesChildrenOutAndAddsOthersAndFiresLater) {
    auto const root = Map::Make(""), map = Map::Make("map");
    root->Insert(map);
    auto const a = Byte::Make("a", "", 1), b = Byte::Make("b", "", 1), c = Byte::Make("c", "", 1);
    auto const other = Text::Make("a", "", "another of that name");
    map->Insert(a);
    map->Insert(b);
    auto const before = map->GetTimestamp();
    int calls = 0;
    auto const binding = map->Bind([&](auto const&) { ++calls; });

    map->Exchange({"a", "there is none"}, {c, other});
    EXPECT_EQ(map->GetChildren(), (std::vector<std::shared_ptr<Node>>{b, c, other}));
    EXPECT_EQ(a->GetParent(), nullptr);
    EXPECT_EQ(b->GetParent(), map);
    EXPECT_EQ(other->GetPath(), "map.a");
    EXPECT_GT(map->GetTimestamp(), before);
    EXPECT_EQ(calls, 0);
    root->Fire();
    EXPECT_EQ(calls, 1);
    root->Fire();
    EXPECT_EQ(calls, 1);
    map->Exchange({"a"}, {});
    map->Exchange({}, {a});
    EXPECT_EQ(map->GetChildren(), (std::vector<std::shared_ptr<Node>>{b, c, a})) << "what was taken out may come back";

    auto const then = map->GetTimestamp();
    root->Fire();
    map->Exchange({"there is none"}, {});
    root->Fire();
    EXPECT_EQ(map->GetTimestamp(), then);
    EXPECT_EQ(calls, 2) << "nothing has changed";
}

TEST(MapExchange, FreesWhatGoes) {
    auto const map = Map::Make("map");
    std::weak_ptr<Node> gone;
    {
        auto const subtree = Map::Make("a");
        subtree->Insert(Byte::Make("b", "", 1));
        gone = subtree;
        map->Insert(subtree);
    }
    map->Exchange({"a"}, {Byte::Make("a", "", 1)});
    EXPECT_TRUE(gone.expired());
}

TEST(MapExchange, ChangesNothingWhenItRefusesAChild) {
    auto const map = Map::Make("map"), below = Map::Make("below"), other = Map::Make("other");
    map->Insert(below);
    map->Insert(Byte::Make("a", "", 1));
    auto const children = map->GetChildren();
    auto const fresh = Byte::Make("fresh", "", 1);
    auto const error = [&](Map& target, std::vector<std::shared_ptr<Node>> const& added) {
        return MessageOf<std::invalid_argument>([&] { target.Exchange({"a"}, added); });
    };
    EXPECT_EQ(error(*map, {fresh, nullptr}), "map.?: there is no node to insert");
    EXPECT_EQ(error(*map, {fresh, Map::Make("")}), "map.?: a node without a name cannot be inserted");
    EXPECT_EQ(error(*map, {fresh, Byte::Make("below", "", 1)}), "map.below: the name is taken");
    EXPECT_EQ(error(*map, {fresh, fresh}), "map.fresh: the name is taken");
    EXPECT_EQ(error(*other, {fresh, below}), "map.below: the node is part of a tree already");
    EXPECT_EQ(error(*below, {fresh, map}), "map.below: a node cannot become a child of a node below it");
    EXPECT_EQ(map->GetChildren(), children);
    EXPECT_EQ(fresh->GetParent(), nullptr);
    auto const isMap = [](Node const& node) { return node.Is<Map>(); };
    auto const picky = std::make_shared<Map>("map", "", Options(), Map::Timestamp(), isMap);
    EXPECT_EQ(error(*picky, {fresh}), "map.fresh: the map does not take this node");
    map->Freeze(Freeze::Frozen);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { map->Exchange({"a"}, {}); }), "map: the configuration node is frozen");
    EXPECT_EQ(map->GetChildren(), children);
}

class MapSet : public testing::Test {
protected:
    MapSet() {
        map->Schema({Schema("size", "", static_cast<unsigned char>(1), {}, Range{0, 10}), Schema("name", "", "a"),
                     Schema("below.on", "", false), Schema("state", "", "x", {}, {"x", "y"})});
        for (auto const& path : {"size", "name", "below.on", "state"}) {
            bindings.push_back(
                map->Find(path)->Bind([this](auto const& event) { fired.push_back(event->GetNode().GetPath(map)); }));
        }
    }

    std::string const untouched = R"({"size": 1,"name": "a","below": {"on": false},"state": "x"})";
    std::shared_ptr<Map> const map = Map::Make("map");
    std::vector<std::string> fired;
    std::vector<type::Binding> bindings;
};

TEST_F(MapSet, SetsOneValueAtOnce) {
    map->Set("name", "b");
    map->Set("size", static_cast<unsigned char>(2));
    map->Set("below.on", true);
    map->Set("state", std::string("y"));
    EXPECT_EQ(json::Data(*map), R"({"size": 2,"name": "b","below": {"on": true},"state": "y"})");
    EXPECT_EQ(fired, (std::vector<std::string>{"name", "size", "below.on", "state"}));
    map->Set("size", "7");
    EXPECT_EQ(Node::GetPtr<Byte>(map->Find("size"))->Get(), 7) << "texts are parsed";
    map->Set("size", object::Make(static_cast<unsigned char>(8)));
    EXPECT_EQ(Node::GetPtr<Byte>(map->Find("size"))->Get(), 8);
}

TEST_F(MapSet, SetsABatchAndThenFires) {
    bindings.push_back(map->Find("state")->Bind([&](auto const&) {
        EXPECT_EQ(Node::GetPtr<Text>(map->Find("name"))->Get(), "c") << "all values are current by now";
    }));
    map->Set({{"state", "y"}, {"size", "1"}, {"name", "b"}, {"name", "c"}});
    EXPECT_EQ(json::Data(*map), R"({"size": 1,"name": "c","below": {"on": false},"state": "y"})");
    EXPECT_EQ(fired, (std::vector<std::string>{"state", "name"})) << "each node that changed, once";
    map->Set(std::vector<Change>());
    EXPECT_EQ(fired.size(), 2U);
}

TEST_F(MapSet, SetsAllOrNothing) {
    auto const error = [&]<class E>(E const*, std::vector<Change> changes) {
        return MessageOf<E>([&] { map->Set(std::move(changes)); });
    };
    std::out_of_range const* const range = nullptr;
    std::invalid_argument const* const argument = nullptr;
    object::BadCast const* const cast = nullptr;
    EXPECT_EQ(error(range, {{"name", "b"}, {"none", "x"}}), "map.none: there is no such configuration node");
    EXPECT_EQ(error(range, {{"name", "b"}, {"", "x"}}), "map.: there is no such configuration node");
    EXPECT_EQ(error(range, {{"name", "b"}, {"size", "11"}}), "map.size: the value 11 is out of the range 0 to 10");
    EXPECT_EQ(error(range, {{"name", "b"}, {"size", "256"}}),
              "The parsed value '256' was out of range of the integer type: 0 to 255");
    EXPECT_EQ(error(range, {{"name", "b"}, {"state", "z"}}),
              "map.state: the value 'z' is not one of the choices 'x', 'y'");
    EXPECT_EQ(error(argument, {{"name", "b"}, {"size", std::shared_ptr<object::Object const>()}}),
              "map.size: there is no value to set");
    EXPECT_EQ(error(argument, {{"name", "b"}, {"size", nullptr}}), "map.size: there is no value to set");
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] { map->Set("size", nullptr); }),
              "map.size: there is no value to set");
    EXPECT_EQ(error(cast, {{"name", "b"}, {"below", "x"}}),
              "Failed to cast the runtime object from 'qel.configuration.node.Map' to a "
              "'qel.configuration.node.Value'");
    EXPECT_EQ(error(cast, {{"name", "b"}, {"size", 7}}),
              "Failed to cast the runtime object from 'qel.object.Int32' to a 'qel.object.UInt8'");
    map->Find("below")->Freeze(Freeze::Frozen);
    EXPECT_EQ(MessageOf<std::logic_error>([&] {
                  map->Set({{"name", "b"}, {"below.on", true}});
              }),
              "map.below.on: the configuration node is frozen");
    EXPECT_EQ(json::Data(*map), untouched);
    EXPECT_TRUE(fired.empty());
}

TEST_F(MapSet, WritesReadOnlyNodes) {
    map->Schema({Schema("status", "", "", Options(10))});
    map->Set("status", "ready");
    EXPECT_EQ(Node::GetPtr<Text>(map->Find("status"))->Get(), "ready");
}

TEST_F(MapSet, CommitsAndDiscardsAllThatIsStagedBelow) {
    Node::GetPtr<Byte>(map->Find("size"))->Stage(2);
    Node::GetPtr<Primitive<bool>>(map->Find("below.on"))->Stage(true);
    map->Discard();
    map->Commit();
    EXPECT_EQ(json::Data(*map), untouched);
    Node::GetPtr<Byte>(map->Find("size"))->Stage(2);
    Node::GetPtr<Primitive<bool>>(map->Find("below.on"))->Stage(true);
    map->Commit();
    EXPECT_EQ(json::Data(*map), R"({"size": 2,"name": "a","below": {"on": true},"state": "x"})");
    EXPECT_TRUE(fired.empty());
    map->Fire();
    EXPECT_EQ(fired, (std::vector<std::string>{"size", "below.on"}));
}

}  // namespace
}  // namespace qel::configuration::node
