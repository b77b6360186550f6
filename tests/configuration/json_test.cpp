#include "qel/configuration/json.hpp"

#include <random>
#include <sstream>
#include <stdexcept>

#include <cereal/archives/json.hpp>
#include <gtest/gtest.h>

#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "qel/serialize/json_error.hpp"
#include "support/message_of.hpp"

namespace qel::configuration {
namespace {

using node::Map;
using node::Option;
using test::MessageOf;

class Json : public testing::Test {
protected:
    Json() {
        map->Schema({Schema("size", "", 1, {}, Range{0, 100}), Schema("name", "", "a"), Schema("group.on", "", false),
                     Schema("numbers[*]", "", 0.5)});
    }

    std::string const untouched = R"({"size": 1,"name": "a","group": {"on": false},"numbers": []})";
    std::shared_ptr<Map> const map = Map::Make("map");
};

TEST_F(Json, StagesTheMembersThatAreThere) {
    auto const changed = json::Stage(*map, R"({"numbers": [1, 2], "group": {"on": true}, "size": 5})");
    ASSERT_EQ(changed.size(), 3U);
    EXPECT_EQ(changed[0], map->Find("numbers")) << "in the order of the data";
    EXPECT_EQ(changed[1], map->Find("group.on"));
    EXPECT_EQ(changed[2], map->Find("size"));
    EXPECT_EQ(json::Data(*map), untouched);
    map->Commit();
    EXPECT_EQ(json::Data(*map), R"({"size": 5,"name": "a","group": {"on": true},"numbers": [1.0,2.0]})");
    EXPECT_EQ(json::Defaults(*map), untouched);
}

TEST_F(Json, StagesNothingOfAnEmptyObject) {
    EXPECT_TRUE(json::Stage(*map, "{}").empty());
    EXPECT_TRUE(json::Stage(*map, R"({"group": {}})").empty());
}

TEST_F(Json, TakesTheLastOfMembersOfOneName) {
    EXPECT_EQ(json::Stage(*map, R"({"size": 5, "size": 6})").size(), 1U);
    map->Commit();
    EXPECT_EQ(Node::GetPtr<node::Primitive<std::int32_t>>(map->Find("size"))->Get(), 6);
}

TEST_F(Json, StagesAllOrNothing) {
    Node::GetPtr<node::Primitive<std::string>>(map->Find("name"))->Stage("before");
    auto const read = [&]<class E>(E const*, char const* data) {
        return MessageOf<E>([&] { json::Stage(*map, data); });
    };
    cereal::Exception const* const wrong = nullptr;
    std::out_of_range const* const range = nullptr;
    EXPECT_EQ(read(wrong, R"({"name": "b", "none": 1})"), "map.none: there is no such configuration node");
    EXPECT_EQ(read(wrong, R"({"name": "b", "group": {"none": 1}})"),
              "map.group.none: there is no such configuration node");
    EXPECT_EQ(read(wrong, R"({"name": "b", "group.on": true})"), "map.group.on: there is no such configuration node");
    EXPECT_EQ(read(range, R"({"name": "b", "size": 101})"), "map.size: the value 101 is out of the range 0 to 100");
    EXPECT_EQ(read(range, R"({"name": "b", "size": 2147483648})"),
              "The parsed value '2147483648' was out of range of the integer type: -2147483648 to 2147483647");
    EXPECT_EQ(read(wrong, R"({"name": "b", "size": "5"})"), "map.size: expected an integer, found the text '5'");
    EXPECT_EQ(read(wrong, R"({"name": "b", "group": 5})"), "map.group: expected an object, found the number 5");
    EXPECT_EQ(read(wrong, R"({"name": "b", "group": [5]})"), "map.group: expected an object, found a list");
    EXPECT_EQ(read(wrong, R"({"name": "b", "group": []})"), "map.group: expected an object, found a list");
    EXPECT_EQ(read(wrong, R"({"name": "b", "group": null})"), "map.group: expected an object, found null");
    EXPECT_EQ(read(wrong, R"(["b"])"), "map: expected an object, found a list");
    EXPECT_EQ(read(wrong, R"([])"), "map: expected an object, found a list");
    map->Commit();
    EXPECT_EQ(json::Data(*map), R"({"size": 1,"name": "before","group": {"on": false},"numbers": []})");
}

TEST_F(Json, RefusesReadOnlyMembers) {
    map->Schema({Schema("status", "", "x", {Option::ReadOnly}), Schema("fixed", "", {Option::ReadOnly})});
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Stage(*map, R"({"size": 5, "status": "y"})"); }),
              "map.status: the configuration value is dil read only");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Stage(*map, R"({"fixed": {}})"); }),
              "map.fixed: the configuration value is dil read only");
    map->Commit();
    EXPECT_EQ(Node::GetPtr<node::Primitive<std::int32_t>>(map->Find("size"))->Get(), 1);
}

TEST_F(Json, LeavesWriteOnlyMembersOutOfTheData) {
    map->Schema({Schema("password", "", "secret", {Option::WriteOnly})});
    EXPECT_EQ(json::Data(*map), untouched);
    EXPECT_NE(json::Defaults(*map).find("secret"), std::string::npos);
    EXPECT_EQ(MessageOf<std::logic_error>([] { json::Data(*Map::Make("map", "", {Option::WriteOnly})); }),
              "map: the configuration value is write only");
}

TEST_F(Json, RefusesTextThatIsNoJson) {
    EXPECT_EQ(MessageOf<serialize::JsonError>([&] { json::Stage(*map, ""); }),
              "line 1, column 1: there is no JSON document");
    EXPECT_EQ(MessageOf<serialize::JsonError>([&] { json::Stage(*map, "{\n\"size\": 5"); }),
              "line 2, column 10: the document ends too early");
    std::string const deep(1'000'000, '[');
    EXPECT_EQ(MessageOf<serialize::JsonError>([&] { json::Stage(*map, "{\"numbers\": " + deep); }),
              "line 1, column 76: lists and objects are nested more than 64 deep");
    EXPECT_EQ(json::Data(*map), untouched);
}

TEST_F(Json, AppendsToTheNodesThatHaveChangedBefore) {
    std::istringstream stream(R"({"size": 5})");
    cereal::JSONInputArchive archive(stream);
    std::vector<std::shared_ptr<Node>> changed = {map->Find("size")};
    map->StageData(archive, changed);
    EXPECT_EQ(changed, (std::vector{map->Find("size"), map->Find("size")}));
}

TEST_F(Json, WritesTheMembersOfAMapIntoTheCurrentObject) {
    std::ostringstream stream;
    {
        cereal::JSONOutputArchive archive(stream, cereal::JSONOutputArchive::Options::NoIndent());
        archive.setNextName("map");
        archive.startNode();
        map->Data(archive);
        archive.finishNode();
    }
    EXPECT_EQ(stream.str(),
              "{\n\"map\": {\n\"size\": 1,\n\"name\": \"a\",\n\"group\": {\n\"on\": false\n},\n\"numbers\": []\n}\n}");
}

TEST_F(Json, OfNodesWithoutANameUsesAWordInItsPlace) {
    EXPECT_EQ(json::Data(*Map::Make("")), "{}");
    auto const node = node::Primitive<bool>::Make("", "", false);
    EXPECT_EQ(json::Data(*node), R"({"value": false})");
    EXPECT_EQ(json::Stage(*node, R"({"value": true})").size(), 1U);
}

TEST_F(Json, TakesWhatItHasWritten) {
    map->Set({{"size", 7}, {"name", "\"quoted\"\n"}, {"group.on", true}});
    Node::GetPtr<node::Vector>(map->Find("numbers"))->Add({{"", 0.1}, {"", 1e-300}});
    std::string const data = json::Data(*map);
    json::Stage(*map, json::Defaults(*map));
    map->Commit();
    EXPECT_EQ(json::Data(*map), untouched);
    json::Stage(*map, data);
    map->Commit();
    EXPECT_EQ(json::Data(*map), data);
}

// Damaged texts end in an exception or in staged values, never in a crash.
TEST_F(Json, SurvivesDamagedText) {
    std::string const whole = R"({"size": 5, "name": "x\u00e9", "group": {"on": true}, "numbers": [1, -2.5e3]})";
    std::string_view const pieces = "{}[]\",:0123456789.eE+-truefalsn\\u \x80\xff";
    std::mt19937 random(7);
    int taken = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string text = whole;
        for (unsigned int edits = random() % 4 + 1; edits > 0; --edits) {
            std::size_t const at = random() % text.size();
            char const piece = pieces[random() % pieces.size()];
            switch (random() % 3) {
                case 0:
                    text[at] = piece;
                    break;
                case 1:
                    text.insert(at, 1, piece);
                    break;
                default:
                    text.erase(at, 1);
            }
        }
        try {
            json::Stage(*map, text);
            ++taken;
        } catch (std::exception const&) {}
        map->Commit();
    }
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, 20'000);
}

}  // namespace
}  // namespace qel::configuration
