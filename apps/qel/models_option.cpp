#include "models_option.hpp"

#include "command.hpp"

namespace qel::app {

void AddModelsOption(CLI::App& command, std::optional<std::string>& models) {
    command
        .add_option("--models", models,
                    "The folder of the models, one folder for each; share/qel/models of the installation unless given")
        ->type_name("DIR");
}

host::Runtime MakeRuntime(std::optional<std::string> const& models) {
    return host::Runtime(models ? boost::filesystem::path(*models) : host::FindModels(),
                         [](std::string const& problem) { Say("warning: " + problem); });
}

}  // namespace qel::app
