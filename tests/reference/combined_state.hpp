#pragma once

#include <vector>

#include "qel/inference/model/state.hpp"

namespace qel::reference {

/// The combined state of several models, rule by rule over the plain numbers of their statuses.
inline inference::model::State GetCombinedState(std::vector<inference::model::State> const& states) {
    using inference::model::BuildingStatus;
    using inference::model::LoadingStatus;
    using inference::model::State;

    std::size_t loading3 = 0, loading2 = 0, bothNonZero = 0, building1 = 0;
    for (State const& state : states) {
        int const loading = static_cast<int>(state.GetLoadingStatus());
        int const building = static_cast<int>(state.GetBuildingStatus());
        if (loading == 3) ++loading3;
        if (loading == 2) ++loading2;
        if (loading != 0 && building != 0) ++bothNonZero;
        if (building == 1) ++building1;
    }
    int loading = 1, building = 2;
    if (building1 > 0) building = 1;
    if (bothNonZero == 0) loading = building = 0;
    if (loading2 > 0) loading = 2, building = 3;
    if (loading3 == states.size()) loading = building = 3;
    return {LoadingStatus(loading), BuildingStatus(building)};
}

}  // namespace qel::reference
