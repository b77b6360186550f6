#pragma once

#include "calibration/reference.hpp"

namespace qel::host::calibration {

/// Throws UsageError, naming the reference or parameter, for a problem that makes no sense: sizes, lengths
/// or errors that are not positive, positions far outside the picture, ends that coincide, tops below their feet, fixed
/// values out of ParameterRanges.
void CheckProblem(Problem const& problem);

}  // namespace qel::host::calibration
