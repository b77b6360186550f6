#include "qel/configuration/node/map.hpp"

#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"

namespace qel::configuration {
namespace {

TEST(Map, BringsDescribedNodesIntoBeing) {
    auto const map = node::Map::Make("root");
    map->Schema({Schema("a.b", "A number", 2.5, {}, Range{1.0, 10.0}),
                 Schema("classes[*]", "A class", node::Options(10)),
                 Schema("state", "A state", "off", {}, {"off", "on"})});
    Node::GetPtr<node::Vector>(map->Find("classes"))->Add({{"", "car"}});
    map->Set("state", "on");
    EXPECT_EQ(json::Data(*map), R"({"a": {"b": 2.5},"classes": ["car"],"state": "on"})");
    EXPECT_EQ(map->Find("classes[0]")->GetPath(map), "classes[0]");
}

}  // namespace
}  // namespace qel::configuration
