#include "qel/inference/get_model_root_path.hpp"

#include <mutex>
#include <utility>

namespace qel::inference {
namespace {

struct ModelRoot {
    std::mutex mutex;
    boost::filesystem::path path = "models";
};

ModelRoot& GetModelRoot() {
    static ModelRoot root;
    return root;
}

}  // namespace

boost::filesystem::path GetModelRootPath(std::string const& modelName) {
    ModelRoot& root = GetModelRoot();
    std::lock_guard<std::mutex> const lock(root.mutex);
    return root.path / modelName;
}

void SetModelRoot(boost::filesystem::path path) {
    ModelRoot& root = GetModelRoot();
    std::lock_guard<std::mutex> const lock(root.mutex);
    root.path = std::move(path);
}

}  // namespace qel::inference
