#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qel::host {

/// What became of one file that may be a plug-in.
struct PluginReport {
    std::string file;
    bool isLoaded = false;
    /// The type names of the algorithms that it has registered, in their order.
    std::vector<std::string> algorithms{};
    /// What is wrong with it, each in plain words to stand behind the file's name.
    std::vector<std::string> problems{};
};

/// Loads the plug-ins beside the library and those of the folders, in their order, and tells of each file that was
/// tried. Throws UsageError for a folder that holds no plug-in.
std::vector<PluginReport> ReportPlugins(std::vector<std::string> const& folders);

/// What the header of a shared library tells.
struct LibraryFacts {
    /// The name under which programs link it; may be empty.
    std::string soname;
    /// The libraries that it needs.
    std::vector<std::string> needed;
};

/// One file, looked into before it is loaded.
struct PluginExplanation {
    /// Nothing when the file is no shared library.
    std::optional<LibraryFacts> facts;
    PluginReport report;
};

/// Looks into a file, then loads it as a plug-in.
PluginExplanation ExplainPlugin(std::string const& file);

}  // namespace qel::host
