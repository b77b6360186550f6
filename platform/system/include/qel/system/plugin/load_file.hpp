#pragma once

#include <boost/filesystem/path.hpp>

#include "qel/system/export.hpp"

namespace qel::system::plugin {

/// Loads one plug-in, whatever its name, as LoadAll does. Throws LoadError with what is wrong with it. Any thread.
QEL_SYSTEM_EXPORT void LoadFile(boost::filesystem::path const& file);

/// Whether a file is loaded in this process, under this path or another one of the same file. Any thread.
QEL_SYSTEM_EXPORT bool IsLoaded(boost::filesystem::path const& file);

}  // namespace qel::system::plugin
