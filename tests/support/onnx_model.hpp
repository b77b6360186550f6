#pragma once

#include <string>
#include <vector>

namespace qel::test {

/// A network whose answer is known from the pixels: each class scores the weighted sum of the channels' mean values.
///
/// Input "pixels": samples x channels x height x width; output "scores": samples x classes.
struct MeanClassifier {
    unsigned int channels = 3;
    unsigned int width = 8;
    unsigned int height = 8;
    /// A row of `channels` weights for each class.
    std::vector<std::vector<float>> weights{{1, 0, 0}, {0, 0, 1}};
    /// Whether the scores go through a softmax, which makes them shares of 1.
    bool softmax = true;
    /// What makes the file unusual: weights among the inputs, an axis that the means do not have, further inputs,
    /// another type of the input's elements.
    bool weightsAreInputs = false;
    unsigned int flattenAxis = 1;
    unsigned int extraInputs = 0;
    unsigned int inputElementType = 1;
};

/// The bytes of the network as an ONNX file.
std::string MakeOnnx(MeanClassifier const& network);

}  // namespace qel::test
