#include "qel/algorithm/info/classification_algorithm.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "info/tree.hpp"
#include "qel/algorithm/info/object_classifier.hpp"

namespace qel::algorithm::info {
namespace {

using configuration::node::Vector;
using testing::ElementsAre;

TEST(ClassificationAlgorithm, HoldsItsLabelsInOrder) {
    auto const root = Map::Make("root");
    ObjectClassifier const info(*root, "name", "", {"person", "car"}, Loaded, "1");
    EXPECT_THAT(info.GetLabels(), ElementsAre("car", "person"));
    EXPECT_STREQ(ClassificationAlgorithm::GetClassesNode(), "classes");
}

TEST(ClassificationAlgorithm, DescribesTheElementsOfItsClassesLast) {
    auto const root = Map::Make("root");
    ObjectClassifier const info(*root, "name", "", {"car"}, Loaded, "1");
    auto const schemas = info.GetSchemas();
    ASSERT_EQ(schemas.size(), 4U);
    EXPECT_EQ(schemas[3].GetPath(), "classes[*]");
    EXPECT_EQ(schemas[3].GetDescription(), "The name of a class this algorithm can return");
    EXPECT_EQ(schemas[3].GetOptions().GetValue(), 10U);
    EXPECT_EQ(schemas[3].GetDefault(), nullptr);
}

TEST(ClassificationAlgorithm, AddsItsLabelsInAscendingOrderOneAtATimeWithEmptyKeys) {
    auto const root = Map::Make("root");
    ObjectClassifier const info(*root, "name", "", {"person", "car"}, Loaded, "1");
    auto const map = MakeMap(info);
    Strings fired;
    auto const binding = map->Find("classes")->Bind(
        [&](auto const&) { fired.push_back(configuration::json::Data(*map->Find("classes"))); });
    info.Set(*map);
    EXPECT_THAT(fired, ElementsAre(R"({"classes": ["car"]})", R"({"classes": ["car","person"]})"));
    EXPECT_EQ(configuration::json::Data(*map),
              R"({"typename": "qel.algorithm.type.ObjectClassifier","version": "1","model_status": "loaded",)"
              R"("classes": ["car","person"]})");
    for (auto const& element : Node::GetPtr<Vector>(map->Find("classes"))->GetElements()) {
        EXPECT_EQ(element->GetName(), "");
        EXPECT_EQ(element->GetOptions().GetValue(), 10U);
        EXPECT_EQ(element->GetDescription(), "The name of a class this algorithm can return");
    }
}

TEST(ClassificationAlgorithm, KeepsTheClassesThatAreThere) {
    auto const root = Map::Make("root");
    ObjectClassifier const info(*root, "name", "", {"b"}, Loaded, "1");
    auto const map = MakeMap(info);
    Node::GetPtr<Vector>(map->Find("classes"))->Add({{"", "z"}});
    info.Set(*map);
    info.Set(*map);
    EXPECT_EQ(configuration::json::Data(*map->Find("classes")), R"({"classes": ["z","b","b"]})");
}

TEST(ClassificationAlgorithm, AddsNothingWithoutLabels) {
    auto const root = Map::Make("root");
    ObjectClassifier const info(*root, "name", "", std::set<std::string>{}, Loaded, "1");
    auto const map = MakeMap(info);
    info.Set(*map);
    EXPECT_EQ(configuration::json::Data(*map->Find("classes")), R"({"classes": []})");
}

TEST(ClassificationAlgorithm, NeedsAVectorForItsClassesAndLeavesTheOtherValuesWritten) {
    auto const root = Map::Make("root");
    ObjectClassifier const info(*root, "name", "", {"car"}, Loaded, "1");
    auto const map = Map::Make("name");
    map->Schema(info.Base::GetSchemas());
    EXPECT_THROW(info.Set(*map), object::BadCast);
    EXPECT_EQ(configuration::json::Data(*map),
              R"({"typename": "qel.algorithm.type.ObjectClassifier","version": "1","model_status": "loaded"})");
    map->Insert(Map::Make("classes"));
    try {
        info.Set(*map);
        FAIL();
    } catch (object::BadCast const& error) {
        EXPECT_STREQ(error.what(),
                     "Failed to cast the runtime object from 'qel.configuration.node.Map' to a "
                     "'qel.configuration.node.Vector'");
    }
}

}  // namespace
}  // namespace qel::algorithm::info
