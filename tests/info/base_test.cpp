#include "qel/algorithm/info/base.hpp"

#include <stdexcept>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "info/tree.hpp"

namespace qel::algorithm::info {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Example : public Base {
public:
    using Base::Base;
    Type GetAlgorithmType() const override { return Type::Tracker; }
};

class WithoutTypename : public Base {
public:
    using Base::Base;
    Type GetAlgorithmType() const override { return Type(7); }
};

static_assert(std::is_abstract_v<Base> && std::has_virtual_destructor_v<Base>);
static_assert(noexcept(std::declval<Base const&>().GetTypename()));

TEST(InfoBase, WithStateAndVersionHasNoModels) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "People", MakeState(3, 1), "1.2");
    EXPECT_EQ(&info.GetConfigRoot(), root.get());
    EXPECT_EQ(info.GetName(), "people");
    EXPECT_EQ(info.GetFriendlyName(), "People");
    EXPECT_EQ(info.GetState(), MakeState(3, 1));
    EXPECT_EQ(info.GetVersion(), "1.2");
    EXPECT_THAT(info.GetModelNames(), IsEmpty());
}

TEST(InfoBase, WithModelsHasNoVersionAndTheFirstState) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "", Strings{"a", "b"});
    EXPECT_EQ(info.GetVersion(), "");
    EXPECT_EQ(info.GetState(), Unloaded);
    EXPECT_EQ(info.GetFriendlyName(), "");
    EXPECT_THAT(info.GetModelNames(), ElementsAre("a", "b"));
}

TEST(InfoBase, CopiesItsTexts) {
    auto const root = Map::Make("root");
    std::string name = "people", friendlyName = "People", version = "1";
    Example const info(*root, name, friendlyName, Unloaded, version);
    name = friendlyName = version = "changed";
    EXPECT_EQ(info.GetName() + info.GetFriendlyName() + info.GetVersion(), "peoplePeople1");
}

TEST(InfoBase, NamesItsNodes) {
    EXPECT_STREQ(Base::GetVersionNode(), "version");
    EXPECT_STREQ(Base::GetTypenameNode(), "typename");
    EXPECT_STREQ(Base::GetModelStatusNode(), "model_status");
    EXPECT_STREQ(ClassesNode, "classes");
    EXPECT_STREQ(ColoursNode, "colours");
}

TEST(InfoBase, DescribesItsThreeNodesInOrder) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "People", Loaded, "1.2");
    EXPECT_EQ(info.GetFlags().GetValue(), 10U);
    auto const map = MakeMap(info);
    EXPECT_THAT(List(*map),
                ElementsAre("people [0] qel.configuration.node.Map: ",
                            "people.typename [10] qel.configuration.node.String: The typename of this algorithm",
                            "people.version [10] qel.configuration.node.String: The version of this algorithm",
                            "people.model_status [10] qel.configuration.node.DynamicEnum: "
                            "The status of this algorithm"));
    EXPECT_EQ(configuration::json::Data(*map), R"({"typename": "","version": "","model_status": "unloaded"})");
    auto const schemas = info.GetSchemas();
    ASSERT_EQ(schemas.size(), 3U);
    EXPECT_EQ(schemas[2].GetChoices(), State::GetAvailableStates());
    EXPECT_FALSE(schemas[0].GetChoices());
    EXPECT_FALSE(schemas[1].GetChoices());
}

TEST(InfoBase, WritesTypenameVersionAndStatusAsThreeChangesInOrder) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "People", Loaded, "1.2");
    auto const map = MakeMap(info);
    Strings fired;
    std::vector<type::Binding> bindings;
    for (auto const& node : map->GetChildren()) {
        bindings.push_back(node->Bind([&](std::shared_ptr<configuration::Event const> const& event) {
            fired.push_back(event->GetNode().GetName() + " " + configuration::json::Data(*map));
        }));
    }
    info.Set(*map);
    EXPECT_THAT(
        fired,
        ElementsAre(
            R"(typename {"typename": "qel.algorithm.type.Tracker","version": "","model_status": "unloaded"})",
            R"(version {"typename": "qel.algorithm.type.Tracker","version": "1.2","model_status": "unloaded"})",
            R"(model_status {"typename": "qel.algorithm.type.Tracker","version": "1.2","model_status": "loaded"})"));
}

TEST(InfoBase, WritesAnEmptyVersionAndTheFirstStateForModelsThatAreNotKnownYet) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "People", Strings{"a"});
    auto const map = MakeMap(info);
    map->Set("version", "former");
    map->Set("model_status", "failed");
    info.Set(*map);
    EXPECT_EQ(configuration::json::Data(*map),
              R"({"typename": "qel.algorithm.type.Tracker","version": "","model_status": "unloaded"})");
}

TEST(InfoBase, LeavesWhatIsWrittenWhenTheMapRefusesTheRest) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "People", Loaded, "1.2");
    auto const map = Map::Make("people");
    map->Schema({info.GetSchemas()[0], info.GetSchemas()[2]});
    EXPECT_THROW(info.Set(*map), std::out_of_range);
    EXPECT_EQ(configuration::json::Data(*map),
              R"({"typename": "qel.algorithm.type.Tracker","model_status": "unloaded"})");
    EXPECT_THROW(info.Set(*Map::Make("people")), std::out_of_range);
}

TEST(InfoBase, RefusesToWriteAStateWithoutAText) {
    auto const root = Map::Make("root");
    Example const info(*root, "people", "People", MakeState(4, 0), "1.2");
    auto const map = MakeMap(info);
    EXPECT_THROW(info.Set(*map), std::invalid_argument);
}

TEST(InfoBaseDeathTest, EndsTheProcessForATypeWithoutAText) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    auto const root = Map::Make("root");
    WithoutTypename const info(*root, "people", "People", Loaded, "1.2");
    EXPECT_DEATH(static_cast<void>(info.GetTypename()), "");
}

}  // namespace
}  // namespace qel::algorithm::info
