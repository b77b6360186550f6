#include "qel/algorithm/calibration/matrix.hpp"

namespace qel::algorithm::calibration {

Matrix MatrixInverse(Matrix const& m) {
    float const determinant = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
                              m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                              m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    float const reciprocal = 1.0F / determinant;
    // Each sign of a cofactor is taken into the order of its difference, so that no element becomes a negative zero.
    return {
        {{(m[1][1] * m[2][2] - m[1][2] * m[2][1]) * reciprocal, (m[0][2] * m[2][1] - m[0][1] * m[2][2]) * reciprocal,
          (m[0][1] * m[1][2] - m[0][2] * m[1][1]) * reciprocal},
         {(m[1][2] * m[2][0] - m[1][0] * m[2][2]) * reciprocal, (m[0][0] * m[2][2] - m[0][2] * m[2][0]) * reciprocal,
          (m[0][2] * m[1][0] - m[0][0] * m[1][2]) * reciprocal},
         {(m[1][0] * m[2][1] - m[1][1] * m[2][0]) * reciprocal, (m[0][1] * m[2][0] - m[0][0] * m[2][1]) * reciprocal,
          (m[0][0] * m[1][1] - m[0][1] * m[1][0]) * reciprocal}}};
}

}  // namespace qel::algorithm::calibration
