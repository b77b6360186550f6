#pragma once

#include <array>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::calibration {

/// Three rows of three columns.
using Matrix = std::array<std::array<float, 3>, 3>;

/// The inverse: the adjugate times the reciprocal of the determinant, in single precision.
/// A singular matrix gives infinities or NaNs and no error.
QEL_ALGORITHM_EXPORT Matrix MatrixInverse(Matrix const& matrix);

}  // namespace qel::algorithm::calibration
