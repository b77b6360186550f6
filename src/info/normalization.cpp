#include "qel/algorithm/metadata/normalization.hpp"

#include <stdexcept>

namespace qel::algorithm::metadata {

boost::span<float const> Normalization::GetMeans() const noexcept { return means; }

boost::span<float const> Normalization::GetStandardDeviations() const noexcept { return standardDeviations; }

std::pair<float, float> Normalization::GetMeanWithDeviation(std::size_t index) const {
    if (index >= means.size()) throw std::out_of_range("Normalization index too large");
    return {means[index], standardDeviations[index]};
}

}  // namespace qel::algorithm::metadata
