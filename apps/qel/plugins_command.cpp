#include <memory>
#include <string>
#include <vector>

#include <boost/json.hpp>

#include "command.hpp"
#include "output_file.hpp"
#include "plugin_report.hpp"
#include "plugins.hpp"
#include "plugins_option.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

namespace json = boost::json;

struct Options {
    std::vector<std::string> plugins;
    std::string explain;
    bool asJson = false;
};

std::string ToText(host::PluginReport const& report) {
    std::string text = report.file + "\n";
    text += !report.isLoaded            ? "  not loaded\n"
            : report.algorithms.empty() ? "  loaded\n"
                                        : "  loaded: " + host::Join(report.algorithms) + "\n";
    for (std::string const& problem : report.problems) text += "  problem: " + problem + "\n";
    return text;
}

std::string ToText(host::PluginExplanation const& explanation) {
    std::string text = ToText(explanation.report);
    if (!explanation.facts) return text;
    text += "  soname: " + (explanation.facts->soname.empty() ? "none" : explanation.facts->soname) + "\n";
    return text + "  needs: " + host::Join(explanation.facts->needed) + "\n";
}

json::array ToJson(std::vector<std::string> const& texts) {
    json::array list;
    for (std::string const& text : texts) list.emplace_back(host::ToValidUtf8(text));
    return list;
}

json::object ToJson(host::PluginReport const& report) {
    return {{"file", host::ToValidUtf8(report.file)},
            {"loaded", report.isLoaded},
            {"algorithms", ToJson(report.algorithms)},
            {"problems", ToJson(report.problems)}};
}

json::object ToJson(host::PluginExplanation const& explanation) {
    json::object object = ToJson(explanation.report);
    if (explanation.facts) {
        object["soname"] = host::ToValidUtf8(explanation.facts->soname);
        object["needs"] = ToJson(explanation.facts->needed);
    }
    return object;
}

void Print(std::string const& text) {
    host::OutputFile output("-");
    output.Write(text);
    output.Close();
}

int Explain(Options const& options) {
    host::LoadPlugins(options.plugins);
    host::PluginExplanation const explanation = host::ExplainPlugin(options.explain);
    Print(options.asJson ? json::serialize(ToJson(explanation)) + "\n" : ToText(explanation));
    return explanation.report.problems.empty() ? exit_code::Success : exit_code::Failure;
}

int List(Options const& options) {
    std::vector<host::PluginReport> const reports = host::ReportPlugins(options.plugins);
    bool isSound = true;
    std::string text;
    json::array list;
    for (host::PluginReport const& report : reports) {
        isSound = isSound && report.problems.empty();
        list.push_back(ToJson(report));
        text += (text.empty() ? "" : "\n") + ToText(report);
    }
    Print(options.asJson ? json::serialize(json::object{{"plugins", std::move(list)}}) + "\n" : text);
    if (reports.empty()) Say("no plug-in libqel_algorithm_*.so lies beside libqel_algorithm.so");
    return isSound ? exit_code::Success : exit_code::Failure;
}

}  // namespace

std::function<int()> AddPluginsCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("plugins", "Tells which plug-ins are loaded, and why others are not");
    auto const options = std::make_shared<Options>();
    AddPluginsOption(*command, options->plugins);
    command->add_option("--explain", options->explain, "Looks into this one file, wherever it is")->type_name("FILE");
    command->add_flag("--json", options->asJson, "As JSON, on one line, for programs");
    command->footer(
        "Exit code 1 when any of them has a problem.\n\n"
        "Examples:\n  qel plugins --plugins build\n  qel plugins --explain build/libqel_algorithm_mine.so");
    return [options] { return options->explain.empty() ? List(*options) : Explain(*options); };
}

}  // namespace qel::app
