#pragma once

#include <stdexcept>

#include "qel/inference/export.hpp"

namespace qel::inference {

/// A network could not be loaded or run on what was given; what() names the model and its file. Any thread.
class QEL_INFERENCE_EXPORT InferenceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    InferenceError(InferenceError const&) = default;
    InferenceError& operator=(InferenceError const&) = default;
    ~InferenceError() override;
};

}  // namespace qel::inference
