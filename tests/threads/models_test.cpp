// States of models, reported on several threads while the tree that shows them is read and written.
#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/info/tracker.hpp"
#include "qel/algorithm/info_builder.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/inference/backend/manager.hpp"
#include "qel/logging/configure.hpp"
#include "threads/together.hpp"

namespace qel::test {
namespace {

using algorithm::InfoBuilder;
using configuration::Node;
using configuration::node::DynamicEnum;
using configuration::node::Map;
using inference::model::BuildingStatus;
using inference::model::LoadingStatus;
using inference::model::State;

class ReportingManager : public inference::backend::Manager {
public:
    using Manager::ReportModelState;
};

State const Building(LoadingStatus::Loading, BuildingStatus::Building);
State const Loaded(LoadingStatus::Loaded, BuildingStatus::Ended);

TEST(Models, AreFollowedWhileTheTreeIsReadAndBoundTo) {
    logging::Configure("error");  // of the models' missing files
    auto const root = Map::Make("root");
    ReportingManager manager;
    auto const publish = [&](std::string const& name) {
        InfoBuilder::Register(
            manager, std::make_shared<algorithm::info::Tracker>(*root, name, name, std::vector<std::string>{"a", "b"},
                                                                std::set<std::string>{"person"}));
    };
    publish("first");
    auto const status = Node::GetPtr<DynamicEnum>(root->Find("algorithms.info.first.model_status"));
    std::atomic<int> running = 3;
    std::atomic<int> told = 0;
    auto const report = [&](char const* model) {
        return [&, model] {
            for (int i = 0; i < Rounds(1000); ++i) manager.ReportModelState(model, i % 2 != 0 ? Loaded : Building);
            --running;
        };
    };
    auto const read = [&] {
        while (running > 0) {
            configuration::json::Data(*root);
            EXPECT_TRUE(State::GetAvailableStates().contains(status->Get()));
        }
    };
    auto const bind = [&] {
        while (running > 0) {
            auto const binding = status->Bind([&](auto const& event) {
                event->GetNode().GetPath();
                ++told;
            });
            std::this_thread::yield();
        }
    };
    auto const publishMore = [&] {
        for (int i = 0; i < Rounds(10); ++i) publish("more" + std::to_string(i));
        --running;
    };
    RunTogether({report("a"), report("b"), read, bind, publishMore});
    manager.ReportModelState("a", Building);
    manager.ReportModelState("a", Loaded);
    manager.ReportModelState("b", Building);
    manager.ReportModelState("b", Loaded);
    EXPECT_EQ(status->Get(), "loaded");
    logging::Configure("");
}

}  // namespace
}  // namespace qel::test
