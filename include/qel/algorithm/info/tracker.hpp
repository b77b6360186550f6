#pragma once

#include "qel/algorithm/info/classification_algorithm.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that follows objects from frame to frame; its labels are what it can follow. Any thread.
class QEL_ALGORITHM_EXPORT Tracker : public ClassificationAlgorithm {
public:
    using ClassificationAlgorithm::ClassificationAlgorithm;
    ~Tracker() override;

    Type GetAlgorithmType() const override;
};

}  // namespace qel::algorithm::info
