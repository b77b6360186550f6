#pragma once

#include "qel/algorithm/info/base.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that tells what a whole frame shows. Any thread.
class QEL_ALGORITHM_EXPORT FrameClassifier : public Base {
public:
    using Base::Base;
    ~FrameClassifier() override;

    Type GetAlgorithmType() const override;
};

}  // namespace qel::algorithm::info
