#include "plugins_option.hpp"

#include <utility>

#include "command.hpp"
#include "plugins.hpp"

namespace qel::app {

void AddPluginsOption(CLI::App& command, std::vector<std::string>& folders) {
    command
        .add_option(
            "--plugins", folders,
            "Loads the plug-ins of this folder, such as the one you build into, after the installed ones; may be "
            "repeated")
        ->type_name("FOLDER")
        ->take_all()
        ->expected(1)
        ->allow_extra_args(false);
}

std::vector<std::string> LoadPluginsOrWarn(std::vector<std::string> const& folders) {
    host::LoadedPlugins loaded = host::LoadPlugins(folders);
    for (std::string const& problem : loaded.problems) Say("warning: " + problem);
    return std::move(loaded.fromFolders);
}

}  // namespace qel::app
