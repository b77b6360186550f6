#include "reference/combined_state.hpp"

#include <vector>

#include <gtest/gtest.h>

#include "info/tree.hpp"
#include "qel/algorithm/info_builder.hpp"

namespace qel::algorithm {
namespace {

TEST(GetCombinedState, AppliesTheFirstRuleThatHolds) {
    struct Case {
        char const* name;
        std::vector<State> states;
        State expected;
    };
    Case const cases[] = {
        {"no model", {}, MakeState(3, 3)},
        {"all loaded, whatever the building status",
         {MakeState(3, 0), MakeState(3, 1), MakeState(3, 3)},
         MakeState(3, 3)},
        {"one failed among loaded ones", {Loaded, MakeState(2, 0)}, MakeState(2, 3)},
        {"one failed among others", {Building, MakeState(2, 1), Unloaded}, MakeState(2, 3)},
        {"nothing begun", {Unloaded, Unloaded}, MakeState(0, 0)},
        {"one only builds, the other only loads", {MakeState(0, 1), MakeState(1, 0)}, MakeState(0, 0)},
        {"one loaded without building, one unloaded", {MakeState(3, 0), Unloaded}, MakeState(0, 0)},
        {"one is building", {Built, Building}, MakeState(1, 1)},
        {"one is building that has not begun to load", {Built, MakeState(0, 1)}, MakeState(1, 1)},
        {"one is building that is loaded", {MakeState(3, 1), Built}, MakeState(1, 1)},
        {"one is loading", {Built}, MakeState(1, 2)},
        {"one is loaded, one is unloaded", {Loaded, Unloaded}, MakeState(1, 2)},
        {"loading with nothing left to build", {MakeState(1, 3)}, MakeState(1, 2)},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(InfoBuilder::GetCombinedState(c.states), c.expected);
    }
}

TEST(GetCombinedState, AgreesWithTheRulesTakenOneByOneForAnyThreeModels) {
    std::vector<State> all;
    for (int value = 0; value < 16; ++value) all.push_back(MakeState(value / 4, value % 4));
    for (State const& first : all) {
        EXPECT_EQ(InfoBuilder::GetCombinedState({&first, 1}), reference::GetCombinedState({first}));
        for (State const& second : all) {
            std::vector<State> states = {first, second};
            EXPECT_EQ(InfoBuilder::GetCombinedState(states), reference::GetCombinedState(states));
            for (State const& third : all) {
                states = {first, second, third};
                EXPECT_EQ(InfoBuilder::GetCombinedState(states), reference::GetCombinedState(states));
            }
        }
    }
}

}  // namespace
}  // namespace qel::algorithm
