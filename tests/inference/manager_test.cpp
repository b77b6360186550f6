#include "qel/inference/backend/manager.hpp"

#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/logging/sink.hpp"
#include "support/message_of.hpp"

namespace qel::inference::backend {
namespace {

using model::BuildingStatus;
using model::LoadingStatus;
using model::State;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_polymorphic_v<Manager> && std::is_default_constructible_v<Manager>);

State const Building(LoadingStatus::Loading, BuildingStatus::Building);
State const Built(LoadingStatus::Loading, BuildingStatus::Built);
State const Loaded(LoadingStatus::Loaded, BuildingStatus::Ended);

class ReportingManager : public Manager {
public:
    using Manager::ReportModelState;
};

TEST(Manager, HasNoModelsWithoutAModelRoot) {
    Manager const manager;
    EXPECT_EQ(manager.GetModel("a"), nullptr);
    EXPECT_TRUE(manager.WaitUntilSettled(std::chrono::milliseconds(0)));
}

TEST(Manager, RefusesAModelRootThatIsNoFolder) {
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([] { Manager const manager("no such folder"); }),
              "The model root no such folder is no folder");
}

struct Follower {
    std::vector<State> states;
    auto Callback() {
        return [this](State state) { states.push_back(state); };
    }
};

TEST(Manager, TellsEveryChangeOfAModelToItsFollowersOnly) {
    ReportingManager manager;
    Follower first, second, other;
    manager.RegisterModelUpdateCallback("a", first.Callback());
    manager.RegisterModelUpdateCallback("a", second.Callback());
    manager.RegisterModelUpdateCallback("b", other.Callback());
    manager.ReportModelState("a", Building);
    manager.ReportModelState("a", Building);
    manager.ReportModelState("a", Loaded);
    manager.ReportModelState("c", Loaded);
    EXPECT_THAT(first.states, ElementsAre(Building, Loaded));
    EXPECT_THAT(second.states, ElementsAre(Building, Loaded));
    EXPECT_THAT(other.states, IsEmpty());
}

TEST(Manager, TellsALateFollowerThePresentState) {
    ReportingManager manager;
    Follower early, late, nothingYet;
    manager.RegisterModelUpdateCallback("a", early.Callback());
    manager.ReportModelState("a", Loaded);
    manager.RegisterModelUpdateCallback("a", late.Callback());
    manager.RegisterModelUpdateCallback("b", nothingYet.Callback());
    manager.ReportModelState("b", State());
    EXPECT_THAT(early.states, ElementsAre(Loaded));
    EXPECT_THAT(late.states, ElementsAre(Loaded));
    EXPECT_THAT(nothingYet.states, IsEmpty());
}

TEST(Manager, RefusesAnEmptyCallback) {
    Manager manager;
    EXPECT_THROW(manager.RegisterModelUpdateCallback("a", {}), std::invalid_argument);
}

TEST(Manager, LetsACallbackReportAndRegisterAndKeepsTheOrder) {
    ReportingManager manager;
    Follower inner, last;
    manager.RegisterModelUpdateCallback("a", [&](State state) {
        if (state != Building) return;
        manager.ReportModelState("a", Built);
        manager.RegisterModelUpdateCallback("a", inner.Callback());
        manager.ReportModelState("a", Loaded);
    });
    manager.RegisterModelUpdateCallback("a", last.Callback());
    manager.ReportModelState("a", Building);
    EXPECT_THAT(last.states, ElementsAre(Building, Built, Loaded));
    EXPECT_THAT(inner.states, ElementsAre(Built, Loaded));
}

TEST(Manager, LogsWhatACallbackThrowsAndGoesOn) {
    std::vector<std::string> lines;
    auto const binding = logging::BindSink([&](logging::Level level, std::string_view name, std::string_view text) {
        lines.push_back(std::to_string(static_cast<int>(level)) + " " + std::string(name) + ": " + std::string(text));
    });
    ReportingManager manager;
    Follower follower;
    manager.RegisterModelUpdateCallback("a", [](State) { throw std::runtime_error("frozen"); });
    manager.RegisterModelUpdateCallback("a", [](State) { throw 1; });
    manager.RegisterModelUpdateCallback("a", follower.Callback());
    manager.ReportModelState("a", Loaded);
    EXPECT_THAT(follower.states, ElementsAre(Loaded));
    EXPECT_THAT(lines,
                ElementsAre("16 qel.inference.backend.Manager: A callback for the state of model a failed: frozen",
                            "16 qel.inference.backend.Manager: A callback for the state of model a failed"));
}

TEST(Manager, CallsOneCallbackAtATimeWhateverTheThreadsThatReport) {
    ReportingManager manager;
    std::vector<State> states;  // not guarded: calls must not overlap
    std::size_t late = 0;
    manager.RegisterModelUpdateCallback("a", [&](State state) { states.push_back(state); });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                manager.ReportModelState("a", i % 2 == t % 2 ? Building : Built);
                if (i % 100 == 0) manager.RegisterModelUpdateCallback("a", [&](State) { ++late; });
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    manager.ReportModelState("a", Loaded);
    ASSERT_GE(states.size(), 2U);
    EXPECT_EQ(states.back(), Loaded);
    for (std::size_t i = 1; i < states.size(); ++i) EXPECT_NE(states[i], states[i - 1]);
    EXPECT_GE(late, 12U);
}

}  // namespace
}  // namespace qel::inference::backend
