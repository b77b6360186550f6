#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include <boost/core/span.hpp>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::metadata {

/// What a model expects to be done to each of an image's three channels: subtract the mean, divide by the deviation.
struct QEL_ALGORITHM_EXPORT Normalization {
    std::array<float, 3> means{};
    std::array<float, 3> standardDeviations{};

    boost::span<float const> GetMeans() const noexcept;
    boost::span<float const> GetStandardDeviations() const noexcept;
    /// Mean and standard deviation of a channel, 0 to 2; throws std::out_of_range for any other.
    std::pair<float, float> GetMeanWithDeviation(std::size_t index) const;
};

}  // namespace qel::algorithm::metadata
