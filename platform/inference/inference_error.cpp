#include "qel/inference/inference_error.hpp"

namespace qel::inference {

InferenceError::~InferenceError() = default;

}  // namespace qel::inference
