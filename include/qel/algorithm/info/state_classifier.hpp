#pragma once

#include "qel/algorithm/info/base.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that tells the state of things, such as open or closed. Any thread.
class QEL_ALGORITHM_EXPORT StateClassifier : public Base {
public:
    using Base::Base;
    ~StateClassifier() override;

    Type GetAlgorithmType() const override;
};

}  // namespace qel::algorithm::info
