#include "plugin_report.hpp"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <boost/filesystem/operations.hpp>

#include "plugins.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/elf_file.hpp"
#include "qel/system/plugin/find_candidates.hpp"
#include "qel/system/plugin/find_file.hpp"
#include "qel/system/plugin/load_error.hpp"
#include "qel/system/plugin/load_file.hpp"

namespace qel::host {
namespace {

namespace files = std::filesystem;

bool IsSame(std::string const& left, std::string const& right) {
    std::error_code ignored;
    return left == right || files::equivalent(left, right, ignored);
}

/// The algorithms that a file has registered.
std::vector<std::string> FindAlgorithms(std::string const& file) {
    std::vector<std::string> names;
    {
        auto const map = algorithm::video::registry::Get().GetMap();
        for (auto const& [id, info] : *map) {
            // The name is a literal of the plug-in: where it lies tells the file.
            if (IsSame(system::plugin::FindFile(info.GetTypeName()).string(), file)) {
                names.emplace_back(info.GetTypeName());
            }
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Fills in what loading has brought.
void Complete(PluginReport& report) {
    report.isLoaded = system::plugin::IsLoaded(report.file);
    if (!report.isLoaded) return;
    report.algorithms = FindAlgorithms(report.file);
    if (report.algorithms.empty() && report.problems.empty()) {
        report.problems.emplace_back(
            "registers no algorithm: nothing in it calls video::registry::Register while it is loaded");
    }
}

/// What the loader would try; nothing in a folder that cannot be read, which loading has told already.
std::vector<boost::filesystem::path> FindCandidates(std::string const& folder) {
    try {
        return system::plugin::FindCandidates(PluginPrefix, folder);
    } catch (boost::filesystem::filesystem_error const&) {
        return {};
    }
}

/// Every file that may be a plug-in, as the loader meets them.
std::vector<PluginReport> FindFiles(std::vector<std::string> const& folders) {
    std::vector<std::string> all{system::GetLibraryPath("qel_algorithm").parent_path().string()};
    all.insert(all.end(), folders.begin(), folders.end());
    std::vector<PluginReport> reports;
    for (std::string const& folder : all) {
        for (auto const& file : FindCandidates(folder)) {
            PluginReport report{.file = file.string()};
            auto const first = std::find_if(reports.begin(), reports.end(),
                                            [&](PluginReport const& other) { return IsSame(other.file, report.file); });
            if (first != reports.end()) report.problems.push_back("is the same file as " + first->file);
            reports.push_back(std::move(report));
        }
    }
    return reports;
}

}  // namespace

std::vector<PluginReport> ReportPlugins(std::vector<std::string> const& folders) {
    LoadedPlugins const loaded = LoadPlugins(folders);
    std::vector<PluginReport> reports = FindFiles(folders);
    for (auto const& [path, reason] : loaded.problems) {
        std::string const file = path.string();
        auto found = std::find_if(reports.begin(), reports.end(),
                                  [&](PluginReport const& report) { return report.file == file; });
        if (found == reports.end()) found = reports.insert(found, PluginReport{.file = file});
        found->problems.push_back(reason);
    }
    for (PluginReport& report : reports) Complete(report);
    return reports;
}

PluginExplanation ExplainPlugin(std::string const& file) {
    PluginExplanation explanation;
    explanation.report.file = files::absolute(file).lexically_normal().string();
    std::string const& path = explanation.report.file;
    try {
        auto [soname, needed] = system::plugin::ReadElfFile(path);
        explanation.facts = LibraryFacts{std::move(soname), std::move(needed)};
    } catch (std::runtime_error const&) {
        // Loading says the same, with what comes before it.
    }
    try {
        system::plugin::LoadFile(path);
    } catch (system::plugin::LoadError const& error) {
        for (auto const& problem : error.GetProblems()) explanation.report.problems.push_back(problem.reason);
    }
    Complete(explanation.report);
    std::string const name = files::path(path).filename().string();
    if (!name.starts_with("lib" + std::string(PluginPrefix)) || !name.ends_with(".so")) {
        explanation.report.problems.push_back("is not found by itself: its name is not lib" +
                                              std::string(PluginPrefix) + "*.so");
    }
    return explanation;
}

}  // namespace qel::host
