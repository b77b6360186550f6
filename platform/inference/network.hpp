#pragma once

#include <vector>

#include <boost/core/span.hpp>

#include "qel/inference/picture.hpp"
#include "qel/inference/tensor.hpp"

namespace qel::inference {

/// A network of a back end. One thread at a time; whoever calls has checked what is passed.
class Network {
public:
    virtual ~Network() = default;

    /// The outputs for a batch; throws std::runtime_error with the reason.
    virtual std::vector<Tensor> Run(Tensor const& batch) = 0;
    /// The outputs for a batch of pictures; throws std::runtime_error with the reason.
    virtual std::vector<Tensor> Run(boost::span<Picture const> pictures, PictureFormat const& format) = 0;
};

}  // namespace qel::inference
