#pragma once

#include <string_view>

namespace qel::inference {

/// Checks that a tensor of an ONNX file (TensorProto) has as many values as its sizes say, in the one place where its
/// type has them: back ends read that many from there without asking. Throws std::runtime_error when it has not, or
/// keeps them in another file.
void CheckOnnxTensor(std::string_view tensor);

}  // namespace qel::inference
