#include <exception>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "classifier.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/video/registry/publish.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/vector.hpp"
#include "qel/inference/get_model_root_path.hpp"
#include "qel/inference/load_labels.hpp"
#include "qel/logging/logger.hpp"

namespace qel::classifier {
namespace {

using configuration::Node;
using configuration::node::Map;
using configuration::node::Vector;

logging::Logger const log(logging::Name("qel.algorithm.Classifier"));

std::set<std::string> ReadLabels() {
    auto const path = inference::GetModelRootPath(DefaultModel) / "onnx" / "labels.txt";
    boost::system::error_code error;
    if (boost::filesystem::status(path, error).type() == boost::filesystem::file_not_found) return {};
    try {
        auto const labels = inference::LoadLabels(path);
        return {labels.begin(), labels.end()};
    } catch (std::exception const& failure) {
        log.Log(logging::Level::Warning, "The descriptor lists no classes: %0%", failure.what());
        return {};
    }
}

/// The list of classes that is published in the tree of a node; null where there is none.
std::shared_ptr<Vector> FindClasses(Node const& node) {
    std::shared_ptr<Node const> root = node.GetPtr();
    while (auto const above = root->GetParent()) root = above;
    if (!root->Is<Map>()) return nullptr;
    return std::dynamic_pointer_cast<Vector>(root->As<Map>().Find("algorithms.info.classifier.classes"));
}

/// Has the list hold the labels of each version of the model that is loaded, in ascending order as at first.
void FollowLabels(inference::backend::Manager& manager, std::shared_ptr<Vector> const& classes) {
    // The manager is there as long as it keeps the callback.
    manager.RegisterModelUpdateCallback(
        DefaultModel, [&manager, weak = std::weak_ptr<Vector>(classes)](inference::model::State state) {
            auto const node = weak.lock();
            if (!node || state.GetLoadingStatus() != inference::model::LoadingStatus::Loaded) return;
            auto const model = manager.GetModel(DefaultModel);
            if (!model) return;  // gone again: the next state tells of it
            std::vector<configuration::node::Change> changes;
            std::set<std::string> const labels(model->GetLabels().begin(), model->GetLabels().end());
            for (std::string const& label : labels) changes.emplace_back("", label);
            node->Replace(std::move(changes));
        });
}

}  // namespace

void CreateNodes(inference::backend::Manager& manager, std::shared_ptr<Node> const& node) {
    namespace registry = algorithm::video::registry;
    static registry::Info::CreateNodes const create = registry::CreateNodes(Properties, Describe);
    bool const isPublished = FindClasses(*node) != nullptr;
    create(manager, node);
    if (isPublished) return;
    if (auto const classes = FindClasses(*node)) FollowLabels(manager, classes);
}

std::shared_ptr<algorithm::info::Base> Describe(configuration::Node& root) {
    return std::make_shared<algorithm::info::ObjectClassifier>(root, "classifier", "Classifier",
                                                               std::vector<std::string>{DefaultModel}, ReadLabels());
}

}  // namespace qel::classifier
