#pragma once

#include <set>
#include <string>

#include "qel/inference/export.hpp"
#include "qel/inference/model/building_status.hpp"
#include "qel/inference/model/loading_status.hpp"

namespace qel::inference::model {

/// Where a model stands: a loading status and a building status. A value of two bytes.
///
///     (Unloaded, NotStarted) --> (Loading, Building) --> (Loading, Built) --> (Loaded, Ended)
///                                         |                     |
///                                         +---------------------+-----------> (Failed, Ended)
///
/// A model whose files change starts again at (Loading, Building), while the former one still serves; one whose files
/// go is (Unloaded, NotStarted). Any other pair is a value too. Any thread.
class State {
public:
    /// (Unloaded, NotStarted).
    constexpr State() noexcept = default;
    constexpr State(LoadingStatus loading, BuildingStatus building) noexcept : loading_(loading), building_(building) {}

    constexpr LoadingStatus GetLoadingStatus() const noexcept { return loading_; }
    constexpr BuildingStatus GetBuildingStatus() const noexcept { return building_; }

    friend constexpr bool operator==(State const&, State const&) noexcept = default;

    /// The texts of all states, as ToString gives them.
    QEL_INFERENCE_EXPORT static std::set<std::string> const& GetAvailableStates();

private:
    LoadingStatus loading_ = LoadingStatus::Unloaded;
    BuildingStatus building_ = BuildingStatus::NotStarted;
};

/// The state in one word for people: "loaded" and "failed" whatever the building status; for the others "building"
/// while it is Building, or else "loading" or "unloaded".
/// Throws std::invalid_argument for a status that is none of the enumerators.
QEL_INFERENCE_EXPORT std::string ToString(State const& state);

}  // namespace qel::inference::model
