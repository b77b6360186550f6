#include "plugins_option.hpp"

#include <utility>

#include "command.hpp"
#include "plugins.hpp"
#include "qel/system/plugin/writable_by_others.hpp"

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
    command.add_flag_callback(
        "--allow-writable-plugins", [] { system::plugin::AllowWritableByOthers(true); },
        "Loads plug-ins, too, that every user of the machine could change");
}

std::vector<std::string> LoadPluginsOrWarn(std::vector<std::string> const& folders) {
    host::LoadedPlugins loaded = host::LoadPlugins(folders);
    for (auto const& [file, reason] : loaded.problems) Say("warning: " + file.string() + ": " + reason);
    return std::move(loaded.fromFolders);
}

}  // namespace qel::app
