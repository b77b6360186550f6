#include "algorithm_table.hpp"

#include <algorithm>

#include "catalogue.hpp"
#include "error.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "text.hpp"

namespace qel::serve {
namespace {

std::vector<hash::MurmurThree32> ListIds() {
    std::vector<hash::MurmurThree32> ids;
    auto const map = algorithm::video::registry::Get().GetMap();
    for (auto const& [id, info] : *map) ids.push_back(id);
    return ids;
}

}  // namespace

AlgorithmTable::AlgorithmTable(host::Runtime& runtime) {
    runtime.MakeConfigurations();
    for (hash::MurmurThree32 const id : ListIds()) {
        if (auto common = runtime.FindConfiguration(id)) entries_.push_back({id, common->GetName(), std::move(common)});
    }
    std::sort(entries_.begin(), entries_.end(), [](Entry const& a, Entry const& b) { return a.name < b.name; });
}

AlgorithmTable::Entry const* AlgorithmTable::FindByName(std::string_view name) const {
    auto const found =
        std::find_if(entries_.begin(), entries_.end(), [&](Entry const& entry) { return entry.name == name; });
    return found == entries_.end() ? nullptr : &*found;
}

AlgorithmTable::Entry const* AlgorithmTable::FindByUse(std::string_view name) const {
    hash::MurmurThree32 id;
    try {
        id = host::FindAlgorithm(name);
    } catch (host::UsageError const&) {
        return nullptr;
    }
    auto const found =
        std::find_if(entries_.begin(), entries_.end(), [&](Entry const& entry) { return entry.id == id; });
    return found == entries_.end() ? nullptr : &*found;
}

std::string AlgorithmTable::ExplainUnknown(std::string_view name) const {
    std::vector<std::string> meant;
    for (std::string const& typeName : host::ListAlgorithms()) {
        if (host::IsSameName(host::GetShortName(typeName), name)) meant.push_back(typeName);
    }
    if (meant.size() > 1) {
        return "the name '" + std::string(name) +
               "' may mean several algorithms; write which one: " + host::Join(meant);
    }
    std::string text = "there is no algorithm '" + std::string(name) + "'";
    if (entries_.empty()) return text + ", nor any other";
    std::vector<std::string> names;
    for (Entry const& entry : entries_) names.push_back(entry.name);
    return text + "; did you mean '" + host::FindNearest(name, names) + "'? (known: " + host::Join(names) + ")";
}

}  // namespace qel::serve
