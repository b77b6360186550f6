#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qel/inference/backend/manager.hpp"
#include "qel/logging/sink.hpp"
#include "support/model_folder.hpp"

namespace qel::inference {

/// What a manager reports of models, as "NAME STATE", in order. Made before the manager.
class Reports {
public:
    void Follow(backend::Manager& manager, std::string const& name) {
        manager.RegisterModelUpdateCallback(name, [this, name](model::State state) {
            std::lock_guard<std::mutex> const lock(mutex_);
            bool const isBuilt = state == model::State(model::LoadingStatus::Loading, model::BuildingStatus::Built);
            lines_.push_back(name + " " + (isBuilt ? "built" : ToString(state)));
        });
    }
    /// All since the last call.
    std::vector<std::string> Take() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return std::exchange(lines_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

/// The texts that are logged while it lives, one a line.
class LoggedText {
public:
    std::string Take() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return std::exchange(text_, {});
    }

private:
    std::mutex mutex_;
    std::string text_;
    type::Binding binding_ =
        logging::BindSink([this](logging::Level /*level*/, std::string_view /*name*/, std::string_view text) {
            std::lock_guard<std::mutex> const lock(mutex_);
            text_ += std::string(text) + "\n";
        });
};

}  // namespace qel::inference
