#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "qel/system/export.hpp"

namespace qel::system::plugin {

/// Loads every plug-in lib<prefix>*.so of the directories: directory by directory, each sorted by file name.
///
/// A file that is met twice, through a link or in two directories, is loaded once. Symbols are resolved at once and
/// stay private to the plug-in; nothing is ever unloaded. A plug-in that cannot be loaded is passed over; when all are
/// done, one LoadError tells every problem. A plug-in whose static initialisers let an exception escape ends the
/// process, as nothing can unwind through the loader: a line on the standard error output names the file and the
/// exception first. Any thread.
QEL_SYSTEM_EXPORT void LoadAll(std::string const& prefix, std::vector<boost::filesystem::path> const& directories);

}  // namespace qel::system::plugin
