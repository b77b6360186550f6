#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "qel/inference/model/state.hpp"

namespace qel::inference {

/// The states of all models and who follows them. Changes queue up; one thread at a time calls the callbacks, without
/// the lock, so that each follower sees every state of a model once and in order.
class ModelUpdates {
public:
    using Callback = std::function<void(model::State)>;

    void Register(std::string_view modelName, Callback callback);
    void Report(std::string_view modelName, model::State state);

private:
    using Callbacks = std::vector<std::shared_ptr<Callback const>>;
    struct Model {
        model::State state;
        Callbacks callbacks;
    };
    struct Update {
        std::string modelName;
        model::State state;
        Callbacks callbacks;
    };

    void DeliverAll(std::unique_lock<std::mutex>& lock);
    static void Deliver(Update const& update);

    std::mutex mutex_;
    std::map<std::string, Model, std::less<>> models_;
    std::deque<Update> updates_;
    bool delivering_ = false;
};

}  // namespace qel::inference
