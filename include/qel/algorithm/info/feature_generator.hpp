#pragma once

#include "qel/algorithm/info/base.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that turns images into features for others to compare. Any thread.
class QEL_ALGORITHM_EXPORT FeatureGenerator : public Base {
public:
    using Base::Base;
    ~FeatureGenerator() override;

    Type GetAlgorithmType() const override;
};

}  // namespace qel::algorithm::info
