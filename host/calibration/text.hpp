#pragma once

#include <string>

namespace qel::host::calibration {

/// The number with at most so many significant digits, without needless zeros.
std::string Format(double value, int digits = 6);

}  // namespace qel::host::calibration
