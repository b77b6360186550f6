#pragma once

#include <vector>

#include <boost/filesystem/path.hpp>

namespace qel::system {

/// The shared libraries of this process as the loader names them, in the order of loading.
std::vector<boost::filesystem::path> GetLoadedLibraries();

}  // namespace qel::system
