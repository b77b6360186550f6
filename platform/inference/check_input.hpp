#pragma once

#include <cstddef>
#include <vector>

#include <boost/core/span.hpp>

#include "qel/inference/picture.hpp"
#include "qel/inference/tensor.hpp"

namespace qel::inference {

/// Throws std::invalid_argument for a batch without samples, or whose number of values is not the product of its shape.
void CheckBatch(Tensor const& batch);

/// Throws std::invalid_argument where a batch has other axes than a network takes; the first, which counts the samples,
/// may have any size. expected: as in OnnxGraph.
void CheckShape(std::vector<std::size_t> const& shape, std::vector<std::size_t> const& expected);

/// Throws std::invalid_argument unless there is a picture, and all of them and the format can be worked with.
void CheckPictures(boost::span<Picture const> pictures, PictureFormat const& format);

}  // namespace qel::inference
