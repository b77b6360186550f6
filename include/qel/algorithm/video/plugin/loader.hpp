#pragma once

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::video::plugin {

/// Loads every plug-in of video algorithms: each libqel_algorithm_*.so in the folder that holds libqel_algorithm.so.
///
/// All work is done by the constructor. A host makes one at start-up; the plug-ins stay loaded until exit. Any thread.
class QEL_ALGORITHM_EXPORT Loader {
public:
    /// Loads what can be loaded, then throws system::plugin::LoadError, with a line for each problem, if there was any.
    Loader();
};

}  // namespace qel::algorithm::video::plugin
