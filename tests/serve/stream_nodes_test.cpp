#include "stream_nodes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::serve {
namespace {

using configuration::node::Map;
using testing::ElementsAre;

std::vector<std::string> NamesOf(Map const& map) {
    std::vector<std::string> names;
    for (auto const& child : map.GetChildren()) names.push_back(child->GetName());
    return names;
}

TEST(StreamNodes, AreMadeWithTheirDefaultsAndPartOfNoTree) {
    StreamNodes const nodes = StreamNodes::Make("gate");
    ASSERT_NE(nodes.map, nullptr);
    EXPECT_EQ(nodes.map->GetName(), "gate");
    EXPECT_EQ(nodes.map->GetParent(), nullptr);
    EXPECT_THAT(NamesOf(*nodes.map), ElementsAre("source", "loop", "enabled", "algorithms", "calibration", "settings"));
    EXPECT_EQ(configuration::json::Data(*nodes.map),
              R"({"source": "","loop": false,"enabled": true,"algorithms": [],"calibration": "","settings": {}})");
    EXPECT_EQ(nodes.settings, nodes.map->Find("settings"));
    for (auto const& child : nodes.map->GetChildren()) EXPECT_NE(child->GetDescription(), "") << child->GetName();
}

TEST(StreamNodes, AreFoundByTheirExactId) {
    auto const streams = Map::Make("streams");
    StreamNodes const gate = StreamNodes::Make("gate");
    streams->Insert(StreamNodes::Make("gate2").map);
    streams->Insert(gate.map);
    StreamNodes const found = StreamNodes::Find(*streams, "gate");
    EXPECT_EQ(found.map, gate.map);
    EXPECT_EQ(found.settings, gate.settings);
    for (char const* const id : {"", "gat", "Gate", "gate.settings"}) {
        EXPECT_EQ(StreamNodes::Find(*streams, id).map, nullptr) << id;
        EXPECT_EQ(StreamNodes::Find(*streams, id).settings, nullptr) << id;
    }
}

TEST(StreamNodes, HaveNoSettingsWhereNobodyHasMadeThem) {
    auto const streams = Map::Make("streams");
    streams->Insert(Map::Make("gate"));
    EXPECT_NE(StreamNodes::Find(*streams, "gate").map, nullptr);
    EXPECT_EQ(StreamNodes::Find(*streams, "gate").settings, nullptr);
}

TEST(StreamNodes, FindMapsWhoseNamesHoldDots) {
    auto const settings = Map::Make("settings");
    auto const child = Map::Make("test.Sample");
    settings->Insert(child);
    settings->Insert(Map::Make("test"));
    EXPECT_EQ(StreamNodes::FindChild(*settings, "test.Sample"), child);
    EXPECT_EQ(StreamNodes::FindChild(*settings, "Sample"), nullptr);
}

TEST(StreamNodes, FindNoValues) {
    StreamNodes const nodes = StreamNodes::Make("gate");
    EXPECT_EQ(StreamNodes::FindChild(*nodes.map, "source"), nullptr);
    EXPECT_EQ(StreamNodes::FindChild(*nodes.map, "algorithms"), nullptr);
    EXPECT_EQ(StreamNodes::FindChild(*nodes.map, "settings"), nodes.settings);
}

}  // namespace
}  // namespace qel::serve
