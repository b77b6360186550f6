#include "qel/inference/model/state.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::inference::model {
namespace {

static_assert(sizeof(State) == 2);

State MakeState(int loading, int building) { return {LoadingStatus(loading), BuildingStatus(building)}; }

TEST(State, IsUnloadedByDefaultAndComparesBothStatuses) {
    EXPECT_EQ(State(), MakeState(0, 0));
    State const state(LoadingStatus::Loading, BuildingStatus::Built);
    EXPECT_EQ(state.GetLoadingStatus(), LoadingStatus(1));
    EXPECT_EQ(state.GetBuildingStatus(), BuildingStatus(2));
    EXPECT_TRUE(state == MakeState(1, 2));
    EXPECT_TRUE(state != MakeState(1, 1));
    EXPECT_TRUE(state != MakeState(2, 2));
}

TEST(State, ReadsAsOneWord) {
    char const* const texts[4][4] = {
        {"unloaded", "building", "unloaded", "unloaded"},
        {"loading", "building", "loading", "loading"},
        {"failed", "failed", "failed", "failed"},
        {"loaded", "loaded", "loaded", "loaded"},
    };
    std::set<std::string> all;
    for (int loading = 0; loading < 4; ++loading) {
        for (int building = 0; building < 4; ++building) {
            EXPECT_EQ(ToString(MakeState(loading, building)), texts[loading][building]);
            all.insert(texts[loading][building]);
        }
    }
    EXPECT_EQ(State::GetAvailableStates(), all);
}

TEST(State, HasNoTextWithAStatusThatIsNone) {
    for (auto const& state : {MakeState(4, 0), MakeState(0, 4), MakeState(255, 255), MakeState(3, 4)}) {
        EXPECT_THROW(ToString(state), std::invalid_argument);
    }
    try {
        ToString(MakeState(4, 255));
        FAIL();
    } catch (std::invalid_argument const& error) {
        EXPECT_STREQ(error.what(), "The model state (4, 255) has no text: both statuses are 0 to 3");
    }
}

}  // namespace
}  // namespace qel::inference::model
