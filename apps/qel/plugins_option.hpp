#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace qel::app {

/// Adds the options --plugins, which fills folders, and --allow-writable-plugins.
void AddPluginsOption(CLI::App& command, std::vector<std::string>& folders);

/// Loads the installed plug-ins and those of the folders, with a line of warning for each that cannot be used. Returns
/// the type names of the algorithms that the folders brought.
std::vector<std::string> LoadPluginsOrWarn(std::vector<std::string> const& folders);

}  // namespace qel::app
