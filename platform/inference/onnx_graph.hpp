#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace qel::inference {

/// What an ONNX file says of the one tensor that its network takes: the size of each axis, 0 where it is left open.
struct OnnxGraph {
    std::vector<std::size_t> inputShape;
};

/// Reads no more of an ONNX file than that, and does it without trust. Throws std::runtime_error with the reason when
/// the bytes are no ONNX model, or one that is not taken: without nodes or outputs, with another number of inputs than
/// one, with another input than 32-bit floats of 1 to 8 axes, with weights that stand in other files, with a tensor
/// whose values are not as many as its sizes say or not where its type has them, with networks that stand in one
/// another more than 8 deep, or with two networks where there is one.
OnnxGraph ReadOnnxGraph(std::string_view bytes);

}  // namespace qel::inference
