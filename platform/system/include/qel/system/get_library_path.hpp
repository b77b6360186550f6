#pragma once

#include <string>

#include <boost/filesystem/path.hpp>

#include "qel/system/export.hpp"

namespace qel::system {

/// The absolute path of the library lib{name}.so (or lib{name}.so.{version}) that this process has loaded.
///
/// The path under which the loader found it: links in its directory are resolved, a link that is the file itself is
/// not. Throws std::runtime_error when no such library is loaded. Any thread.
QEL_SYSTEM_EXPORT boost::filesystem::path GetLibraryPath(std::string const& name);

}  // namespace qel::system
