#include "info/model_status.hpp"

#include <utility>

#include "qel/algorithm/info_builder.hpp"

namespace qel::algorithm {

ModelStatus::ModelStatus(std::size_t modelCount, std::weak_ptr<configuration::node::DynamicEnum> node)
    : node_(std::move(node)), states_(modelCount + 1) {}

void ModelStatus::Update(std::size_t model, inference::model::State state) {
    auto const node = node_.lock();
    if (Write(model, state, node.get())) node->Fire();
}

bool ModelStatus::Write(std::size_t model, inference::model::State state, configuration::node::DynamicEnum* node) {
    std::lock_guard<std::mutex> const lock(mutex_);
    states_[model + 1] = state;
    auto const combined = InfoBuilder::GetCombinedState(boost::span(states_).subspan(1));
    if (combined == states_.front()) return false;
    if (node != nullptr) {
        node->Stage(inference::model::ToString(combined));
        node->Commit();
    }
    // Remembered only now: what could not be written is written with the next update.
    states_.front() = combined;
    return node != nullptr;
}

}  // namespace qel::algorithm
