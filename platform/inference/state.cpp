#include "qel/inference/model/state.hpp"

#include <stdexcept>

namespace qel::inference::model {

std::set<std::string> const& State::GetAvailableStates() {
    static std::set<std::string> const states = {"building", "failed", "loaded", "loading", "unloaded"};
    return states;
}

std::string ToString(State const& state) {
    auto const loading = state.GetLoadingStatus();
    auto const building = state.GetBuildingStatus();
    if (loading > LoadingStatus::Loaded || building > BuildingStatus::Ended) {
        throw std::invalid_argument("The model state (" + std::to_string(static_cast<int>(loading)) + ", " +
                                    std::to_string(static_cast<int>(building)) +
                                    ") has no text: both statuses are 0 to 3");
    }
    if (loading == LoadingStatus::Loaded) return "loaded";
    if (loading == LoadingStatus::Failed) return "failed";
    if (building == BuildingStatus::Building) return "building";
    return loading == LoadingStatus::Loading ? "loading" : "unloaded";
}

}  // namespace qel::inference::model
