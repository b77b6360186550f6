#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/inference/model/state.hpp"

namespace qel::algorithm {

/// Keeps an algorithm's "model_status" node at the combined state of the algorithm's models.
///
/// Shared by the model-update callbacks of the algorithm. Update may be called on several threads at once.
class ModelStatus {
public:
    ModelStatus(std::size_t modelCount, std::weak_ptr<configuration::node::DynamicEnum> node);

    /// Takes the new state of a model, counted from 0; writes and fires the node when the combined state changed and
    /// the node still exists.
    void Update(std::size_t model, inference::model::State state);

private:
    /// Whether the node has been written.
    bool Write(std::size_t model, inference::model::State state, configuration::node::DynamicEnum* node);

    std::weak_ptr<configuration::node::DynamicEnum> const node_;
    // Held for the fold and for writing what comes out, so that the node ends with the last state; never while the node
    // fires, for its handlers may do anything.
    std::mutex mutex_;
    // The combined state that was published last, then the state of each model.
    std::vector<inference::model::State> states_;
};

}  // namespace qel::algorithm
