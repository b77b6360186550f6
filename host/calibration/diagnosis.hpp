#pragma once

#include <vector>

#include "calibration/estimate.hpp"
#include "calibration/solver.hpp"

namespace qel::host::calibration {

/// What is wrong with a problem before anything is computed: too few references.
std::vector<Finding> FindShortages(Problem const& problem);

/// Which parameters the references determine poorly, and why.
struct Determination {
    /// The answer means nothing.
    std::vector<Finding> refusals;
    /// The answer is worth less than it could be.
    std::vector<Finding> warnings;
};
Determination FindWeaknesses(Problem const& problem, Mounting<double> const& mounting, Estimate const& estimate);

/// Free parameters at the end of their search range, and a view so steep that heights are measured sideways.
std::vector<Finding> FindOddities(Problem const& problem, Mounting<double> const& mounting);

}  // namespace qel::host::calibration
