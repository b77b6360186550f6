#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "qel/algorithm/info/base.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/vector.hpp"
#include "qel/inference/model/state.hpp"

namespace qel::inference::model {

inline void PrintTo(State const& state, std::ostream* stream) {
    *stream << '(' << static_cast<int>(state.GetLoadingStatus()) << ", " << static_cast<int>(state.GetBuildingStatus())
            << ')';
}

}  // namespace qel::inference::model

namespace qel::algorithm {

using configuration::Node;
using configuration::node::Map;
using inference::model::BuildingStatus;
using inference::model::LoadingStatus;
using inference::model::State;
using Strings = std::vector<std::string>;

inline State MakeState(int loading, int building) { return {LoadingStatus(loading), BuildingStatus(building)}; }

State const Unloaded = MakeState(0, 0);
State const Building = MakeState(1, 1);
State const Built = MakeState(1, 2);
State const Failed = MakeState(2, 3);
State const Loaded = MakeState(3, 3);

/// A descriptor's own map, with its schemas applied, as it stands before its values are set.
inline std::shared_ptr<Map> MakeMap(info::Base const& info) {
    auto map = Map::Make(info.GetName());
    map->Schema(info.GetSchemas());
    return map;
}

/// A line for each node below, "path [options] type: description", in the order of the tree.
inline void List(Node const& node, std::string const& path, Strings& lines) {
    lines.push_back(path + " [" + std::to_string(node.GetOptions().GetValue()) + "] " + node.GetTypeName() + ": " +
                    node.GetDescription());
    if (node.Is<Map>()) {
        for (auto const& child : node.As<Map>().GetChildren()) List(*child, path + "." + child->GetName(), lines);
    }
    if (node.Is<configuration::node::Vector>()) {
        for (auto const& child : node.As<configuration::node::Vector>().GetElements()) {
            List(*child, path + "[" + child->GetName() + "]", lines);
        }
    }
}

inline Strings List(Node const& node) {
    Strings lines;
    List(node, node.GetName(), lines);
    return lines;
}

}  // namespace qel::algorithm
