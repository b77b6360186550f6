#pragma once

#include "qel/algorithm/info/classification_algorithm.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that tells what objects are. Any thread.
class QEL_ALGORITHM_EXPORT ObjectClassifier : public ClassificationAlgorithm {
public:
    using ClassificationAlgorithm::ClassificationAlgorithm;
    ~ObjectClassifier() override;

    Type GetAlgorithmType() const override;
};

}  // namespace qel::algorithm::info
