#pragma once

#include <boost/filesystem/path.hpp>

namespace qel::system::plugin {

/// Throws std::runtime_error, with the reason, unless the path leads to a regular file that exists.
void CheckRegularFile(boost::filesystem::path const& file);

/// Throws std::runtime_error, with the reason and what to do, when all users can write the file or its folder and that
/// has not been allowed.
void CheckNotWritableByOthers(boost::filesystem::path const& file);

}  // namespace qel::system::plugin
