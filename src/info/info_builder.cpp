#include "qel/algorithm/info_builder.hpp"

#include <algorithm>
#include <stdexcept>

#include <boost/filesystem/operations.hpp>

#include "info/model_status.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/inference/get_model_root_path.hpp"
#include "qel/inference/metadata.hpp"
#include "qel/logging/logger.hpp"
#include "qel/serialize/load_json_from_file.hpp"

namespace qel::algorithm {

using configuration::Node;
using configuration::node::DynamicEnum;
using configuration::node::Map;
using configuration::node::Options;
using inference::model::BuildingStatus;
using inference::model::LoadingStatus;
using inference::model::State;
using VersionNode = configuration::node::Primitive<std::string>;

namespace {

logging::Logger const Log(logging::Name("qel.algorithm.InfoBuilder"));

/// The map "algorithms.info" below the root, made where it is missing.
std::shared_ptr<Map> FindOrMakeInfo(Map& root, Options flags) {
    if (auto const found = root.Find("algorithms.info")) return Node::GetPtr<Map>(found);
    auto info = Map::Make("info", "Information about the algorithms", flags);
    if (auto const algorithms = root.Find("algorithms")) {
        Node::GetPtr<Map>(algorithms)->Insert(info);
        return info;
    }
    auto const algorithms = Map::Make("algorithms", "", flags);
    algorithms->Insert(info);
    root.Insert(algorithms);
    return info;
}

std::shared_ptr<Map> MakeAlgorithmMap(info::Base const& info) {
    std::string const& shown = info.GetFriendlyName().empty() ? info.GetName() : info.GetFriendlyName();
    auto map = Map::Make(info.GetName(), "Information associated with the '" + shown + "' algorithm", info.GetFlags());
    map->Schema(info.GetSchemas());
    info.Set(*map);
    return map;
}

/// Has the manager tell the states of the models to the node.
void FollowModels(inference::backend::Manager& manager, std::vector<std::string> const& modelNames,
                  std::shared_ptr<DynamicEnum> const& node) {
    auto const status = std::make_shared<ModelStatus>(modelNames.size(), node);
    for (std::size_t i = 0; i < modelNames.size(); ++i) {
        manager.RegisterModelUpdateCallback(modelNames[i], [status, i](State state) { status->Update(i, state); });
    }
}

void ReadVersion(std::string const& modelName, VersionNode& node) {
    auto const path = inference::GetModelRootPath(modelName) / "onnx" / "metadata.json";
    Log.Log(logging::Level::Information, "Looking for model: %0% metadata at: %1%", modelName, path);
    auto const status = boost::filesystem::status(path);
    if (status.type() == boost::filesystem::status_error || status.type() == boost::filesystem::file_not_found) {
        Log.Log(logging::Level::Warning, "File %0% not found, leaving the 'version' field of %1% unpopulated", path,
                modelName);
        return;
    }
    // Whatever else stands there is read, a directory too, so that it is not passed over in silence.
    inference::Metadata metadata;
    cereal::utils::LoadJsonFromFile(path, metadata);
    node.Stage(metadata.GetVersion());
    node.Commit();
    node.Fire();
}

}  // namespace

void InfoBuilder::Register(inference::backend::Manager& manager, std::shared_ptr<info::Base> info) {
    if (!info) throw std::invalid_argument("There is no algorithm descriptor to publish");
    Node& root = info->GetConfigRoot();
    if (!root.Is<Map>()) throw Node::BadCastError(root, type::Name<Map>::Value);
    auto const published = FindOrMakeInfo(*root.GetPtr<Map>(), info->GetFlags());
    auto const map = MakeAlgorithmMap(*info);
    auto const& modelNames = info->GetModelNames();
    if (!modelNames.empty()) {
        auto const status = Node::GetPtr<DynamicEnum>(map->Find(info::ModelStatusNode));
        auto const version = Node::GetPtr<VersionNode>(map->Find(info::VersionNode));
        FollowModels(manager, modelNames, status);
        ReadVersion(modelNames.front(), *version);
    }
    published->Insert(map);
}

State InfoBuilder::GetCombinedState(boost::span<State const> states) {
    auto const all = [&](auto const& rule) { return std::all_of(states.begin(), states.end(), rule); };
    auto const any = [&](auto const& rule) { return std::any_of(states.begin(), states.end(), rule); };
    auto const isLoaded = [](State s) { return s.GetLoadingStatus() == LoadingStatus::Loaded; };
    auto const hasFailed = [](State s) { return s.GetLoadingStatus() == LoadingStatus::Failed; };
    auto const hasBegun = [](State s) {
        return s.GetLoadingStatus() != LoadingStatus::Unloaded && s.GetBuildingStatus() != BuildingStatus::NotStarted;
    };
    auto const isBuilding = [](State s) { return s.GetBuildingStatus() == BuildingStatus::Building; };

    if (all(isLoaded)) return {LoadingStatus::Loaded, BuildingStatus::Ended};
    if (any(hasFailed)) return {LoadingStatus::Failed, BuildingStatus::Ended};
    if (!any(hasBegun)) return {LoadingStatus::Unloaded, BuildingStatus::NotStarted};
    // Any model counts here, also one that has not begun to load.
    if (any(isBuilding)) return {LoadingStatus::Loading, BuildingStatus::Building};
    return {LoadingStatus::Loading, BuildingStatus::Built};
}

}  // namespace qel::algorithm
