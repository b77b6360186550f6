#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <boost/json.hpp>

#include "catalogue.hpp"
#include "command.hpp"
#include "json_text.hpp"
#include "models_option.hpp"
#include "output_file.hpp"
#include "plugins_option.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

namespace json = boost::json;

json::value ToJson(host::AlgorithmDescription const& description) {
    json::object object{
        {"type_name", host::ToValidUtf8(description.typeName)},
        {"kind", description.kind},
        {"colour_formats", json::value_from(description.colourFormats)},
        {"file", host::ToValidUtf8(description.file)},
        {"properties", description.properties},
    };
    if (!description.problem.empty()) object["problem"] = host::ToValidUtf8(description.problem);
    return object;
}

/// What a property takes: its type, and the limits or choices that the schema gives.
std::string DescribeValues(json::object const& schema) {
    auto const text = [&schema](char const* key) {
        auto const* const value = schema.if_contains(key);
        return value == nullptr ? std::string() : host::FormatJson(*value);
    };
    std::string line = text("type");
    std::string const minimum = text("minimum");
    std::string const maximum = text("maximum");
    if (!minimum.empty() && !maximum.empty()) {
        line += ", " + minimum + " to " + maximum;
    } else if (!minimum.empty()) {
        line += ", at least " + minimum;
    } else if (!maximum.empty()) {
        line += ", at most " + maximum;
    }
    if (schema.contains("pattern")) line += ", like " + text("pattern");
    if (schema.contains("enum")) line += ", one of " + text("enum");
    if (schema.contains("readOnly")) line += ", read only";
    return line;
}

void AddProperties(json::object const& properties, std::string const& prefix, std::string& text) {
    for (auto const& [name, value] : properties) {
        json::object const& schema = value.as_object();
        std::string const path = prefix + std::string(name);
        if (auto const* const inner = schema.if_contains("properties")) {
            AddProperties(inner->as_object(), path + ".", text);
            continue;
        }
        text += "    " + path;
        if (auto const* const initial = schema.if_contains("default")) text += " = " + host::FormatJson(*initial);
        text += "  (" + DescribeValues(schema) + ")\n";
        auto const* const description = schema.if_contains("description");
        if (description != nullptr) text += "        " + host::FormatJson(*description) + "\n";
    }
}

std::string ToText(host::AlgorithmDescription const& description) {
    std::string text = description.typeName + "\n";
    if (!description.problem.empty()) text += "  cannot be used: " + description.problem + "\n";
    if (!description.kind.empty()) {
        text += "  kind: " + description.kind + "\n  colour formats: " + host::Join(description.colourFormats) + "\n";
    }
    text += "  file: " + description.file + "\n";
    if (!description.properties.empty()) text += "  properties:\n";
    AddProperties(description.properties, "", text);
    return text;
}

struct Options {
    bool json = false;
    std::vector<std::string> plugins;
    std::optional<std::string> models;
};

int List(Options const& options) {
    LoadPluginsOrWarn(options.plugins);
    host::Runtime runtime = MakeRuntime(options.models);
    auto const descriptions = host::DescribeAlgorithms(runtime);
    std::string text;
    if (options.json) {
        json::array list;
        for (auto const& description : descriptions) list.push_back(ToJson(description));
        text = host::SerializeJson(json::object{{"algorithms", std::move(list)}}) + "\n";
    } else {
        for (auto const& description : descriptions) text += (text.empty() ? "" : "\n") + ToText(description);
    }
    host::OutputFile output("-");
    output.Write(text);
    output.Close();
    if (descriptions.empty()) Say(host::NoAlgorithm);
    return exit_code::Success;
}

}  // namespace

std::function<int()> AddAlgorithmsCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("algorithms", "Lists the algorithms and their properties");
    auto const options = std::make_shared<Options>();
    command->add_flag("--json", options->json, "As JSON, on one line, for programs");
    AddPluginsOption(*command, options->plugins);
    AddModelsOption(*command, options->models);
    command->footer("Examples:\n  qel algorithms --json | python3 -m json.tool\n  qel algorithms --plugins build");
    return [options] { return List(*options); };
}

}  // namespace qel::app
