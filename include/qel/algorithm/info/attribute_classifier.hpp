#pragma once

#include "qel/algorithm/info/classification_algorithm.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that tells what objects look like or carry. Any thread.
class QEL_ALGORITHM_EXPORT AttributeClassifier : public ClassificationAlgorithm {
public:
    using ClassificationAlgorithm::ClassificationAlgorithm;
    ~AttributeClassifier() override;

    Type GetAlgorithmType() const override;
};

}  // namespace qel::algorithm::info
