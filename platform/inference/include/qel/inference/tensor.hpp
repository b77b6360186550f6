#pragma once

#include <cstddef>
#include <vector>

namespace qel::inference {

/// Numbers in a box of any number of axes; the index of the last axis varies fastest. Of what a network takes and
/// gives, the first axis counts the samples of the batch.
struct Tensor {
    std::vector<std::size_t> shape;
    /// As many as the product of the shape.
    std::vector<float> values;

    friend bool operator==(Tensor const&, Tensor const&) = default;
};

}  // namespace qel::inference
