#pragma once

#include <boost/filesystem/path.hpp>

#include "qel/system/export.hpp"

namespace qel::system::plugin {

/// The absolute path of the shared object, or of the program, that holds an address of its code or static data.
/// An empty path when none does. Any thread.
QEL_SYSTEM_EXPORT boost::filesystem::path FindFile(void const* address);

}  // namespace qel::system::plugin
