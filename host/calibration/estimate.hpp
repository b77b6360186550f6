#pragma once

#include <optional>
#include <vector>

#include "calibration/fit.hpp"

namespace qel::host::calibration {

/// What the references say about a mounting that fits them.
struct Estimate {
    /// Of the parameters' errors; nothing where the references leave a free parameter entirely open.
    std::optional<Covariance> covariance;
    /// Of each reference: how many standard errors of its marks it is off; a thousand where it is not seen.
    std::vector<double> deviations;
    /// Of each reference: its weight in the fit; 0 for the one left out.
    std::vector<double> weights;
    /// Sum of the weighted squares of the deviations, and what it is expected to be: the spare references.
    double squares = 0, spare = 0;
};

Estimate MakeEstimate(Problem const& problem, Mounting<double> const& mounting,
                      std::optional<std::size_t> without = std::nullopt);

/// Number of parameters that are to be found.
std::size_t CountFree(Problem const& problem);

}  // namespace qel::host::calibration
