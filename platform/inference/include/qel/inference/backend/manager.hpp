#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

#include <boost/filesystem/path.hpp>

#include "qel/inference/export.hpp"
#include "qel/inference/model.hpp"
#include "qel/inference/model/state.hpp"

namespace qel::inference {

class ModelFollower;
class ModelUpdates;

namespace backend {

/// The models of a folder and the back ends that run them; a host makes one and hands it to whatever needs models.
///
/// May be derived from: then it tells those who follow a model what the derived class reports. Any thread.
class QEL_INFERENCE_EXPORT Manager {
public:
    using ModelUpdateCallback = std::function<void(model::State)>;

    /// Without models: nothing is loaded, no thread runs.
    Manager();
    /// Loads the models below a folder and follows the disk from then on, on a thread of its own. Each sub-folder NAME
    /// with "onnx/model.onnx" and "onnx/metadata.json" is the model NAME.
    ///
    /// Makes the folder the process's model root (SetModelRoot). Throws std::invalid_argument when it is no folder,
    /// std::system_error when the disk cannot be followed.
    explicit Manager(boost::filesystem::path modelRoot);
    Manager(Manager const&) = delete;
    Manager& operator=(Manager const&) = delete;
    /// Waits for a callback or a load that is under way, for no other.
    virtual ~Manager();

    /// Keeps the callback for as long as the manager lives and calls it with the model's new state whenever that
    /// changes, and with the present state when something has been reported already.
    ///
    /// Calls come one at a time, in the order of the changes, on the threads that report or register; no lock is held,
    /// so a callback may call the manager. What it throws is logged. Throws std::invalid_argument for an empty one.
    virtual void RegisterModelUpdateCallback(std::string_view modelName, ModelUpdateCallback callback);

    /// The model of that name as it is now; null while it is not loaded. Whoever holds it may go on running it when the
    /// manager has replaced or dropped it: it lives as long as it is held. Ask again for each frame.
    virtual std::shared_ptr<Model const> GetModel(std::string_view modelName) const;

    /// Waits until every change of the disk that was made before is dealt with: what can be loaded is, the rest has
    /// failed or is unloaded. Returns false when that takes longer; without a model root there is nothing to wait for.
    /// Not to be called by a callback.
    virtual bool WaitUntilSettled(std::chrono::milliseconds limit) const;

protected:
    /// Reports the state of a model; nothing happens when it is the one reported last. When another thread is calling
    /// callbacks, it makes the calls for this change too.
    void ReportModelState(std::string_view modelName, model::State state);

private:
    std::unique_ptr<ModelUpdates> updates_;
    // The last member: its thread ends before what it reports to.
    std::unique_ptr<ModelFollower> follower_;
};

}  // namespace backend
}  // namespace qel::inference
