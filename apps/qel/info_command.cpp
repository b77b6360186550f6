#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/json.hpp>

#include "command.hpp"
#include "descriptor_watch.hpp"
#include "error.hpp"
#include "interrupt.hpp"
#include "json_text.hpp"
#include "models_option.hpp"
#include "output_file.hpp"
#include "plugins_option.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

namespace json = boost::json;

/// How often the wish to end is looked for.
constexpr std::chrono::milliseconds Pause{50};
/// How long models may take before their states are printed as they are.
constexpr std::chrono::seconds Patience{30};

struct Options {
    bool json = false;
    bool watch = false;
    std::vector<std::string> plugins;
    std::optional<std::string> models;
};

/// A colour's components as "#rrggbb".
std::string ToHex(json::object const& colour) {
    std::string text = "#";
    for (char const* component : {"r", "g", "b"}) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned int>(colour.at(component).to_number<int>()));
        text += digits;
    }
    return text;
}

std::string ToText(json::value const& value) {
    if (!value.is_object()) {
        std::string text = host::FormatJson(value);
        return text.empty() ? "-" : text;
    }
    std::vector<std::string> colours;
    for (auto const& [name, colour] : value.get_object()) {
        json::object const* const components = colour.if_object();
        bool const isColour =
            components && components->contains("r") && components->contains("g") && components->contains("b");
        colours.push_back(std::string(name) + " " + (isColour ? ToHex(*components) : host::FormatJson(colour)));
    }
    return host::Join(colours);
}

/// Each descriptor by its name, a line for each of its members below.
std::string ToText(json::object const& descriptors) {
    std::string text;
    for (auto const& [name, descriptor] : descriptors) {
        text += (text.empty() ? "" : "\n") + std::string(name) + "\n";
        for (auto const& [member, value] : descriptor.as_object()) {
            text += "  " + std::string(member) + ": " + ToText(value) + "\n";
        }
    }
    return text;
}

/// In UTC, with milliseconds.
std::string ToText(std::chrono::system_clock::time_point time) {
    auto const milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    auto const seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char date[32], text[48];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(milliseconds % 1000));
    return text;
}

std::string MakeLine(host::DescriptorWatch::Change const& change, bool asJson) {
    std::string const time = ToText(change.time);
    if (asJson) {
        return json::serialize(json::object{{"time", time}, {"path", change.path}, {"value", change.value}}) + "\n";
    }
    // A new descriptor is told whole, in the words of the list.
    if (change.value.is_object()) {
        return time + " " + change.path + ": new\n" + ToText(json::object{{change.path, change.value}});
    }
    return time + " " + change.path + ": " + ToText(change.value) + "\n";
}

std::string MakeStart(json::object const& descriptors, bool asJson) {
    return asJson ? json::serialize(descriptors) + "\n" : ToText(descriptors);
}

/// Until the manager has dealt with all models that are there, or a person has no patience any more.
void WaitForModels(host::Runtime& runtime, host::Interrupt const& interrupt) {
    auto const end = std::chrono::steady_clock::now() + Patience;
    while (!runtime.GetManager().WaitUntilSettled(Pause)) {
        if (interrupt.GetSignal() != 0 || std::chrono::steady_clock::now() > end) return;
    }
}

int Print(Options const& options, host::OutputFile& output) {
    host::Interrupt const interrupt;
    host::Runtime runtime = MakeRuntime(options.models);
    runtime.MakeConfigurations();
    if (!options.watch) {
        WaitForModels(runtime, interrupt);
        if (int const signal = interrupt.GetSignal(); signal != 0) return 128 + signal;
        json::object const descriptors = host::ReadDescriptors(runtime.GetDescriptors());
        output.Write(MakeStart(descriptors, options.json));
        output.Close();
        if (descriptors.empty() && !options.json) Say("no algorithm publishes a descriptor");
        return exit_code::Success;
    }
    host::DescriptorWatch watch(runtime.GetDescriptors());
    output.Write(MakeStart(watch.GetStart(), options.json));
    while (interrupt.GetSignal() == 0 && output.HasReader()) {
        if (auto const change = watch.Next(Pause)) output.Write(MakeLine(*change, options.json));
    }
    // To be interrupted is how it ends.
    return exit_code::Success;
}

int Run(Options const& options) {
    LoadPluginsOrWarn(options.plugins);
    host::OutputFile output("-");
    try {
        return Print(options, output);
    } catch (host::UsageError const&) {
        throw;
    } catch (host::Error const&) {
        // Whoever reads has seen enough, as with "qel info | head".
        if (output.HasReader()) throw;
        return exit_code::Success;
    }
}

}  // namespace

std::function<int()> AddInfoCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "info", "Prints what the algorithms publish: kind, version, state of the models, classes");
    auto const options = std::make_shared<Options>();
    command->add_flag("--json", options->json, "As JSON, on one line, for programs");
    command->add_flag("--watch", options->watch, "Goes on with a line for each change until it is interrupted");
    AddPluginsOption(*command, options->plugins);
    AddModelsOption(*command, options->models);
    command->footer("Examples:\n  qel info\n  qel info --watch --models /srv/models");
    return [options] { return Run(*options); };
}

}  // namespace qel::app
