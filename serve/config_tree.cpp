#include "config_tree.hpp"

#include <algorithm>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <boost/json.hpp>

#include "preparation.hpp"
#include "qel/configuration/json.hpp"
#include "read_json.hpp"
#include "staging.hpp"
#include "stream_nodes.hpp"

namespace qel::serve {
namespace {

namespace json = boost::json;
using configuration::node::Map;

std::string GetText(json::object const& stream, std::string_view name) {
    auto const* const value = stream.if_contains(name);
    return value == nullptr ? std::string() : std::string(value->as_string());
}

bool GetBool(json::object const& stream, std::string_view name, bool otherwise) {
    auto const* const value = stream.if_contains(name);
    return value == nullptr ? otherwise : value->as_bool();
}

/// A URI as it is, a file from the folder.
std::string Locate(std::string const& text, boost::filesystem::path const& folder) {
    if (text.empty() || text.find("://") != std::string::npos) return text;
    return boost::filesystem::absolute(text, folder).lexically_normal().string();
}

}  // namespace

ConfigTree::ConfigTree(host::Runtime& runtime)
    : runtime_(runtime), table_(runtime), streams_(Map::Make("streams", "Videos that are looked at, each by its id")) {
    runtime.GetRoot().Insert(streams_);
}

ConfigTree::~ConfigTree() { GetRoot().Exchange({streams_->GetName()}, {}); }

ConfigTree::Plan ConfigTree::Prepare(json::object const& next, json::object const& current, json::object const& known) {
    try {
        return Preparation(runtime_, table_, streams_, {next, current, known}).Run();
    } catch (...) {
        Discard();
        throw;
    }
}

void ConfigTree::Apply(Plan plan) {
    for (Plan::Exchange& exchange : plan.exchanges) {
        // Nobody sees new nodes with values that are not theirs.
        for (auto const& node : exchange.added) node->Commit();
        exchange.map->Exchange(exchange.removed, std::move(exchange.added));
    }
    GetRoot().Commit();
}

std::vector<StreamSpec> ConfigTree::MakeSpecs(json::object const& document,
                                              boost::filesystem::path const& folder) const {
    std::vector<StreamSpec> specs;
    auto const* const streams = FindObject(&document, "streams");
    if (streams == nullptr) return specs;
    for (auto const& [id, value] : *streams) {
        json::object const& stream = value.get_object();
        StreamSpec spec{.id = id,
                        .source = Locate(GetText(stream, "source"), folder),
                        .loop = GetBool(stream, "loop", false),
                        .enabled = GetBool(stream, "enabled", true),
                        .calibration = Locate(GetText(stream, "calibration"), folder)};
        auto const settings = StreamNodes::Find(*streams_, id).settings;
        for (auto const& name : stream.at("algorithms").get_array()) {
            spec.algorithms.emplace_back(name.get_string());
            auto const* const entry = table_.FindByUse(spec.algorithms.back());
            if (entry == nullptr) continue;
            spec.settings.emplace(spec.algorithms.back(), StreamNodes::FindChild(*settings, entry->name));
        }
        specs.push_back(std::move(spec));
    }
    return specs;
}

json::object ConfigTree::MakeStreamSchema() {
    return ReadJson(configuration::json::Schema(*StreamNodes::Make("stream").map)).get_object();
}

}  // namespace qel::serve
