#include "plugins.hpp"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "catalogue.hpp"
#include "error.hpp"
#include "qel/algorithm/video/plugin/loader.hpp"
#include "qel/system/plugin/load_all.hpp"
#include "qel/system/plugin/load_error.hpp"

namespace qel::host {
namespace {

namespace files = std::filesystem;

bool IsPlugin(files::path const& file) {
    std::string const name = file.filename().string();
    return name.starts_with("lib" + std::string(PluginPrefix)) && name.ends_with(".so");
}

void CheckFolder(std::string const& folder) {
    auto const refuse = [&folder](std::string const& why) {
        throw UsageError("no plug-ins can be taken from '" + folder + "': " + why);
    };
    std::error_code error;
    files::file_type const type = files::status(folder, error).type();
    if (type == files::file_type::not_found) {
        refuse("there is no such folder; name the one that libqel_algorithm_*.so is built into");
    }
    if (type != files::file_type::none && type != files::file_type::directory) {
        refuse("it is not a folder; name the one that libqel_algorithm_*.so is built into");
    }
    files::directory_iterator const entries(folder, error);
    if (error) refuse(error.message());
    if (std::none_of(begin(entries), end(entries), [](auto const& entry) { return IsPlugin(entry.path()); })) {
        refuse("it holds no libqel_algorithm_*.so; build the plug-in, or name the folder that it is built into");
    }
}

/// Adds the problems that load() meets.
template <class Load>
void AddProblems(std::vector<system::plugin::Problem>& problems, Load const& load) {
    try {
        load();
    } catch (system::plugin::LoadError const& error) {
        problems.insert(problems.end(), error.GetProblems().begin(), error.GetProblems().end());
    }
}

}  // namespace

LoadedPlugins LoadPlugins(std::vector<std::string> const& folders) {
    for (std::string const& folder : folders) CheckFolder(folder);
    LoadedPlugins loaded;
    AddProblems(loaded.problems, [] { algorithm::video::plugin::Loader const loader; });
    std::vector<std::string> const before = ListAlgorithms();
    AddProblems(loaded.problems, [&folders] {
        system::plugin::LoadAll(PluginPrefix, {folders.begin(), folders.end()});
    });
    std::vector<std::string> const after = ListAlgorithms();
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                        std::back_inserter(loaded.fromFolders));
    return loaded;
}

}  // namespace qel::host
