#pragma once

#include <cstdint>

namespace qel::inference::model {

/// How far a model has come on its way from its file to what the device runs.
enum class BuildingStatus : std::uint8_t {
    NotStarted = 0,  ///< nothing has been done yet
    Building = 1,    ///< under way, which may take minutes on some devices
    Built = 2,       ///< done; what was built is being loaded
    Ended = 3,       ///< nothing is left to do, whether it succeeded or not
};

}  // namespace qel::inference::model
