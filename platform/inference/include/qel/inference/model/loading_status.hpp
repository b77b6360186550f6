#pragma once

#include <cstdint>

namespace qel::inference::model {

/// How far a back end has come with a model.
enum class LoadingStatus : std::uint8_t {
    Unloaded = 0,  ///< no back end has the model: its files are missing, or nobody has asked for it
    Loading = 1,   ///< a back end is at work on it
    Failed = 2,    ///< no back end could load it
    Loaded = 3,    ///< it runs
};

}  // namespace qel::inference::model
