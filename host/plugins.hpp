#pragma once

#include <string>
#include <vector>

#include "qel/system/plugin/problem.hpp"

namespace qel::host {

/// The file of a plug-in is called lib<prefix>*.so.
inline constexpr char PluginPrefix[] = "qel_algorithm_";

/// What came of loading plug-ins.
struct LoadedPlugins {
    /// The plug-ins that could not be used; the others can be.
    std::vector<system::plugin::Problem> problems;
    /// The type names of the algorithms that the folders brought, in their order.
    std::vector<std::string> fromFolders;
};

/// Loads the plug-ins of video algorithms that lie beside the library, then those of the folders, in their order.
/// Throws UsageError, before anything is loaded, when a folder cannot be read or holds no plug-in: a mistyped one would
/// show as an algorithm that is missing.
LoadedPlugins LoadPlugins(std::vector<std::string> const& folders = {});

}  // namespace qel::host
