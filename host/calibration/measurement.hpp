#pragma once

#include <optional>

#include "calibration/calibration.hpp"
#include "qel/algorithm/calibration/engine.hpp"

namespace qel::host::calibration {

/// A length in metres and its standard error.
struct Measurement {
    double metres;
    /// First order: from the parameters' covariance and the error of the marks.
    double error;

    /// Half the width of the interval that holds the true length in 95 % of cases.
    double GetPlusMinus() const { return 1.959963984540054 * error; }
};

/// Measures in pixels of a picture, by the engine, and says how well it knows.
///
/// Positions outside the picture count as its nearest edge. Serves one thread at a time, like the engine.
class Measurer {
public:
    /// clickError: standard error of a marked position in pixels, along each axis.
    Measurer(Calibration const& calibration, Size size, double clickError = 1);

    /// Distance on the ground. Throws std::runtime_error where a point is on or above the horizon.
    Measurement GetDistance(Pixel from, Pixel to) const;

    /// Height of an object standing on the ground, foot its bottom centre, extent its height in the picture.
    /// Throws std::runtime_error with the engine's own reason, or where the foot is on or above the horizon.
    Measurement GetHeight(Pixel foot, double extent) const;

    /// Position on the ground in metres: x to the right of the point below the camera, y ahead of it.
    /// Throws std::runtime_error where the pixel is on or above the horizon.
    geometry::Point<double, 2> GetGround(Pixel pixel) const;

    /// Distance on the ground from the point below the camera. Throws like GetGround.
    Measurement GetDistanceFromCamera(Pixel pixel) const;

    Calibration const& GetCalibration() const { return calibration_; }

private:
    void RequireGround(Pixel pixel) const;

    Calibration calibration_;
    Size size_;
    double clickError_;
    Model<double> model_;
    algorithm::calibration::Engine engine_;
};

}  // namespace qel::host::calibration
