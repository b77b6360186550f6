#pragma once

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "runtime.hpp"

namespace qel::app {

/// Adds the option --models.
void AddModelsOption(CLI::App& command, std::optional<std::string>& models);

/// A runtime with the models of that folder, or of the one where they are installed; warns of what does not work.
host::Runtime MakeRuntime(std::optional<std::string> const& models);

}  // namespace qel::app
