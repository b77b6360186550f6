// How "model_status" follows the states of an algorithm's models.

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "info/publishing.hpp"
#include "qel/algorithm/info/state_classifier.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"

namespace qel::algorithm {
namespace {

using configuration::node::DynamicEnum;
using testing::ElementsAre;
using testing::IsEmpty;

class ModelStatusTest : public testing::Test {
protected:
    void Publish(Strings const& names) {
        InfoBuilder::Register(manager, std::make_shared<info::StateClassifier>(*root, "door", "", names));
        node = Node::GetPtr<DynamicEnum>(root->Find("algorithms.info.door.model_status"));
        binding = node->Bind([this](auto const&) { fired.push_back(node->Get()); });
    }
    void Report(std::size_t model, State state) { manager.callbacks.at(model).second(state); }
    Strings Take() { return std::exchange(fired, {}); }

    ModelRoot models;
    LoggedLines log;
    std::shared_ptr<Map> root = Map::Make("root");
    RecordingManager manager;
    std::shared_ptr<DynamicEnum> node;
    Strings fired;
    type::Binding binding;
};

TEST_F(ModelStatusTest, FollowsOneModelThroughItsStates) {
    Publish({"a"});
    EXPECT_EQ(node->Get(), "unloaded");
    for (State const& state : {Building, Built, Loaded, Failed, Building, Unloaded}) Report(0, state);
    EXPECT_THAT(Take(), ElementsAre("building", "loading", "loaded", "failed", "building", "unloaded"));
    EXPECT_EQ(node->Get(), "unloaded");
}

TEST_F(ModelStatusTest, FiresOnceForEachChangeOfTheCombinedState) {
    Publish({"a", "b"});
    Report(0, Building);
    EXPECT_THAT(Take(), ElementsAre("building"));
    Report(1, Building);
    EXPECT_THAT(Take(), IsEmpty());
    Report(0, Loaded);
    EXPECT_THAT(Take(), IsEmpty());  // the other one still builds
    Report(1, Built);
    EXPECT_THAT(Take(), ElementsAre("loading"));
    Report(1, Loaded);
    EXPECT_THAT(Take(), ElementsAre("loaded"));
    Report(0, MakeState(3, 0));
    EXPECT_THAT(Take(), IsEmpty());
    Report(1, Failed);
    EXPECT_THAT(Take(), ElementsAre("failed"));
}

TEST_F(ModelStatusTest, DoesNothingForAStateThatIsTheModelsAlready) {
    Publish({"a", "b"});
    Report(0, Unloaded);
    Report(0, Building);
    node->Set("failed");
    Take();
    Report(0, Building);
    EXPECT_THAT(Take(), IsEmpty());
    EXPECT_EQ(node->Get(), "failed");
}

TEST_F(ModelStatusTest, LeavesTheNodeAloneWhileTheCombinedStateStands) {
    Publish({"a", "b"});
    Report(0, Failed);
    auto const timestamp = node->GetTimestamp();
    Take();
    Report(1, Building);
    Report(1, Loaded);
    Report(1, Unloaded);
    EXPECT_THAT(Take(), IsEmpty());
    EXPECT_EQ(node->GetTimestamp(), timestamp);
}

TEST_F(ModelStatusTest, FiresForTheLastPublishedStateAndNotForTheNodesValue) {
    Publish({"a"});
    node->Set("loaded");
    Take();
    Report(0, Loaded);
    EXPECT_THAT(Take(), ElementsAre("loaded"));
}

TEST_F(ModelStatusTest, CountsEachMentionOfAModelAsAModel) {
    Publish({"a", "a"});
    ASSERT_EQ(manager.callbacks.size(), 2U);
    Report(0, Loaded);
    EXPECT_EQ(node->Get(), "loading");
    Report(1, Loaded);
    EXPECT_EQ(node->Get(), "loaded");
}

TEST_F(ModelStatusTest, KeepsTheModelsOfAlgorithmsApart) {
    Publish({"a"});
    InfoBuilder::Register(manager, std::make_shared<info::StateClassifier>(*root, "gate", "", Strings{"a"}));
    Report(1, Loaded);
    EXPECT_EQ(node->Get(), "unloaded");
    EXPECT_EQ(DataOf(*root, "algorithms.info.gate.model_status"), R"({"model_status": "loaded"})");
}

TEST_F(ModelStatusTest, LetsAHandlerReportAnotherModel) {
    Publish({"a", "b"});
    auto const nested = node->Bind([&](auto const&) { Report(1, Loaded); });
    Report(0, Loaded);
    EXPECT_EQ(node->Get(), "loaded");
}

TEST_F(ModelStatusTest, PassesOnWhatAHandlerThrowsAndStandsWritten) {
    Publish({"a"});
    auto const throwing = node->Bind([](auto const&) { throw std::runtime_error("handler"); });
    EXPECT_THROW(Report(0, Loaded), std::runtime_error);
    EXPECT_EQ(node->Get(), "loaded");
}

TEST_F(ModelStatusTest, EndsWithTheCombinedStateWhateverTheThreadsThatReport) {
    Publish({"a", "b", "c", "d"});
    binding.Release();
    std::vector<std::thread> threads;
    for (std::size_t model = 0; model < 4; ++model) {
        threads.emplace_back([&, model] {
            for (int round = 0; round < 100; ++round) {
                for (State const& state : {Building, Built, Failed, Loaded}) Report(model, state);
            }
        });
    }
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) EXPECT_TRUE(State::GetAvailableStates().contains(node->Get()));
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(node->Get(), "loaded");
}

}  // namespace
}  // namespace qel::algorithm
