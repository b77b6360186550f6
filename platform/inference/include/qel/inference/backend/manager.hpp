#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "qel/inference/export.hpp"
#include "qel/inference/model/state.hpp"

namespace qel::inference {

class ModelUpdates;

namespace backend {

/// The back ends that run the models of algorithms; a host makes one and hands it to whatever needs models.
///
/// A base to derive from: this one has no back end, and tells those who follow a model what a derived class reports.
/// Any thread.
class QEL_INFERENCE_EXPORT Manager {
public:
    using ModelUpdateCallback = std::function<void(model::State)>;

    Manager();
    Manager(Manager const&) = delete;
    Manager& operator=(Manager const&) = delete;
    virtual ~Manager();

    /// Keeps the callback for as long as the manager lives and calls it with the model's new state whenever that
    /// changes, and with the present state when something has been reported already.
    ///
    /// Calls come one at a time, in the order of the changes, on the threads that report or register; no lock is held,
    /// so a callback may call the manager. What it throws is logged. Throws std::invalid_argument for an empty one.
    virtual void RegisterModelUpdateCallback(std::string_view modelName, ModelUpdateCallback callback);

protected:
    /// Reports the state of a model; nothing happens when it is the one reported last. When another thread is calling
    /// callbacks, it makes the calls for this change too.
    void ReportModelState(std::string_view modelName, model::State state);

private:
    std::unique_ptr<ModelUpdates> updates_;
};

}  // namespace backend
}  // namespace qel::inference
