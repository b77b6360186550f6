#include "qel/inference/backend/manager.hpp"

#include <utility>

#include "model_updates.hpp"

namespace qel::inference::backend {

Manager::Manager() : updates_(std::make_unique<ModelUpdates>()) {}

Manager::~Manager() = default;

void Manager::RegisterModelUpdateCallback(std::string_view modelName, ModelUpdateCallback callback) {
    updates_->Register(modelName, std::move(callback));
}

void Manager::ReportModelState(std::string_view modelName, model::State state) { updates_->Report(modelName, state); }

}  // namespace qel::inference::backend
