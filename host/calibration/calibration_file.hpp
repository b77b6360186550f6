#pragma once

#include <string>

#include "calibration/calibration.hpp"

namespace qel::host::calibration {

/// Reads {"tilt":..,"roll":..,"height_m":..,"vertical_fov":..} and, where given, "covariance": four rows of four
/// numbers in this order of the parameters. Throws Error with file, line and column.
Calibration ReadCalibration(std::string const& path);

/// The same from a text; name is how errors call it.
Calibration ParseCalibration(std::string const& name, std::string const& text);

/// The text that ParseCalibration reads back without losing a bit.
std::string FormatCalibration(Calibration const& calibration);

/// Replaces the file in one step. Throws Error with the path and the reason.
void WriteCalibration(std::string const& path, Calibration const& calibration);

}  // namespace qel::host::calibration
