#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "qel/system/export.hpp"

namespace qel::system::plugin {

/// The entries lib<prefix>*.so of a directory, absolute, sorted by name: what LoadAll would try.
/// Throws boost::filesystem::filesystem_error when the directory cannot be read. Any thread.
QEL_SYSTEM_EXPORT std::vector<boost::filesystem::path> FindCandidates(std::string const& prefix,
                                                                      boost::filesystem::path const& directory);

}  // namespace qel::system::plugin
