#pragma once

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/video/registry/info.hpp"

namespace qel::algorithm::video::registry {

/// Enters an algorithm into the registry, under the identifier that info carries.
///
/// A plug-in calls it from a static object while it is loaded: `static bool const Registered = Register({...});`.
/// When the identifier is taken, the entry that is there stays, false is returned, and a problem that names the files
/// of both goes to whoever loads the plug-in. Must not be called by a thread that holds a lock of the registry.
QEL_ALGORITHM_EXPORT bool Register(Info info);

}  // namespace qel::algorithm::video::registry
