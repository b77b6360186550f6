#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace qel::app {

/// What the program returns; an interrupted run returns 128 and the number of the signal.
namespace exit_code {
constexpr int Success = 0;
constexpr int Failure = 1;
constexpr int Usage = 2;
}  // namespace exit_code

/// Each adds a sub-command to the program and returns what it does once the arguments are read: it gives the exit code.
/// An error leaves it as host::Error.
std::function<int()> AddRunCommand(CLI::App& program);
std::function<int()> AddMeasureCommand(CLI::App& program);
std::function<int()> AddCalibrateCommand(CLI::App& program);
std::function<int()> AddServeCommand(CLI::App& program);
std::function<int()> AddAlgorithmsCommand(CLI::App& program);
std::function<int()> AddInfoCommand(CLI::App& program);
std::function<int()> AddPluginsCommand(CLI::App& program);
std::function<int()> AddNewPluginCommand(CLI::App& program);

/// Writes a line to the standard error output, with the program's name before it.
void Say(std::string const& line);

}  // namespace qel::app
