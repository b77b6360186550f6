// Descriptors: publishes what an algorithm is in the configuration tree, and follows the state of its model there.

#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <qel/algorithm/info/object_classifier.hpp>
#include <qel/algorithm/info_builder.hpp>
#include <qel/configuration/json.hpp>
#include <qel/configuration/node/map.hpp>
#include <qel/inference/backend/manager.hpp>
#include <qel/inference/get_model_root_path.hpp>

namespace configuration = qel::configuration;
namespace files = boost::filesystem;
namespace info = qel::algorithm::info;
namespace model = qel::inference::model;

// Stands for a back end that loads models: it reports how far it has come.
class Backend : public qel::inference::backend::Manager {
public:
    void Report(model::LoadingStatus loading, model::BuildingStatus building) {
        ReportModelState("street", {loading, building});
    }
};

// A folder of models that is gone with the object: each has its own, with what is known of it in metadata.json.
class ModelFolder {
public:
    ModelFolder() : path_(files::temp_directory_path() / files::unique_path("qel-models-%%%%%%%%")) {
        files::create_directories(path_ / "street" / "onnx");
        std::ofstream((path_ / "street" / "onnx" / "metadata.json").string())
            << R"({"max_batch_size": 1, "backend_loading_priority": 0, "version": "1.4"})";
        qel::inference::SetModelRoot(path_);
    }
    ModelFolder(ModelFolder const&) = delete;
    ModelFolder& operator=(ModelFolder const&) = delete;
    ~ModelFolder() { files::remove_all(path_); }

private:
    files::path path_;
};

int main() {
    ModelFolder const models;
    auto const root = configuration::node::Map::Make("root");
    Backend backend;

    // The provider of the algorithm describes it: it tells people from cars with the model "street".
    qel::algorithm::InfoBuilder::Register(
        backend, std::make_shared<info::ObjectClassifier>(*root, "street_objects", "Objects of the street",
                                                          std::vector<std::string>{"street"},
                                                          std::set<std::string>{"person", "car"}));

    // Whoever has the tree can read the descriptor...
    std::printf("published: %s\n", configuration::json::Data(*root).c_str());

    // ...and follow the model. The binding is the subscription: it ends with it.
    auto const status = root->Find("algorithms.info.street_objects.model_status");
    auto const print = [&status](std::shared_ptr<configuration::Event const> const&) {
        std::printf("model_status: %s\n", configuration::json::Data(*status).c_str());
    };
    auto const binding = status->Bind(print);

    backend.Report(model::LoadingStatus::Loading, model::BuildingStatus::Building);
    backend.Report(model::LoadingStatus::Loading, model::BuildingStatus::Built);
    backend.Report(model::LoadingStatus::Loaded, model::BuildingStatus::Ended);
}
