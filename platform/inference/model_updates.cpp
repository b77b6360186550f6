#include "model_updates.hpp"

#include <exception>
#include <stdexcept>
#include <utility>

#include "qel/logging/logger.hpp"

namespace qel::inference {
namespace {

logging::Logger const log(logging::Name("qel.inference.backend.Manager"));

}  // namespace

void ModelUpdates::Register(std::string_view modelName, Callback callback) {
    if (!callback) throw std::invalid_argument("The model-update callback must not be empty");
    auto const shared = std::make_shared<Callback const>(std::move(callback));
    std::unique_lock<std::mutex> lock(mutex_);
    Model& model = models_[std::string(modelName)];
    bool const hasState = model.state != model::State();
    if (hasState) updates_.push_back({std::string(modelName), model.state, {shared}});
    try {
        model.callbacks.push_back(shared);
    } catch (...) {
        // Nobody else has seen it, the lock is held.
        if (hasState) updates_.pop_back();
        throw;
    }
    DeliverAll(lock);
}

void ModelUpdates::Report(std::string_view modelName, model::State state) {
    std::unique_lock<std::mutex> lock(mutex_);
    Model& model = models_[std::string(modelName)];
    if (model.state == state) return;
    updates_.push_back({std::string(modelName), state, model.callbacks});
    model.state = state;
    DeliverAll(lock);
}

void ModelUpdates::DeliverAll(std::unique_lock<std::mutex>& lock) {
    if (delivering_) return;
    delivering_ = true;
    while (!updates_.empty()) {
        Update const update = std::move(updates_.front());
        updates_.pop_front();
        lock.unlock();
        Deliver(update);
        lock.lock();
    }
    delivering_ = false;
}

void ModelUpdates::Deliver(Update const& update) {
    for (auto const& callback : update.callbacks) {
        try {
            (*callback)(update.state);
        } catch (std::exception const& error) {
            log.Log(logging::Level::Error, "A callback for the state of model %0% failed: %1%", update.modelName,
                    error.what());
        } catch (...) {
            log.Log(logging::Level::Error, "A callback for the state of model %0% failed", update.modelName);
        }
    }
}

}  // namespace qel::inference
