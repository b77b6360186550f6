#include "qel/inference/backend/manager.hpp"

#include <stdexcept>
#include <utility>

#include <boost/filesystem/operations.hpp>

#include "model_follower.hpp"
#include "model_updates.hpp"
#include "qel/inference/get_model_root_path.hpp"

namespace qel::inference::backend {

Manager::Manager() : updates_(std::make_unique<ModelUpdates>()) {}

Manager::Manager(boost::filesystem::path modelRoot) : Manager() {
    boost::system::error_code error;
    if (!boost::filesystem::is_directory(modelRoot, error)) {
        throw std::invalid_argument("The model root " + modelRoot.string() + " is no folder");
    }
    SetModelRoot(modelRoot);
    follower_ = std::make_unique<ModelFollower>(
        std::move(modelRoot), [this](std::string const& name, model::State state) { ReportModelState(name, state); });
}

Manager::~Manager() = default;

void Manager::RegisterModelUpdateCallback(std::string_view modelName, ModelUpdateCallback callback) {
    updates_->Register(modelName, std::move(callback));
}

std::shared_ptr<Model const> Manager::GetModel(std::string_view modelName) const {
    return follower_ ? follower_->GetModel(modelName) : nullptr;
}

bool Manager::WaitUntilSettled(std::chrono::milliseconds limit) const {
    return !follower_ || follower_->WaitUntilSettled(limit);
}

void Manager::ReportModelState(std::string_view modelName, model::State state) { updates_->Report(modelName, state); }

}  // namespace qel::inference::backend
