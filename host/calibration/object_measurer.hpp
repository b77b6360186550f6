#pragma once

#include <optional>

#include "calibration/measurement.hpp"
#include "qel/algorithm/video/result.hpp"

namespace qel::host::calibration {

/// Adds metres to the objects of one stream's frames; keep one for each stream. Serves one thread at a time.
class ObjectMeasurer {
public:
    /// withUncertainty: also states plus/minus, half the interval of 95 %, for a pixel of error in each box edge.
    ObjectMeasurer(Calibration calibration, bool withUncertainty);

    /// Adds to each object of a frame, as attributes: "ground_x_m" and "ground_y_m", where its bottom centre stands,
    /// from the point below the camera (to the right, ahead); "distance_m" from that point; "height_m"; and with
    /// uncertainty "distance_plus_minus_m" and "height_plus_minus_m". An object that cannot be measured gets
    /// "measurement_error", the reason, instead.
    void Measure(algorithm::video::Result& result, Size frameSize);

private:
    Calibration calibration_;
    bool withUncertainty_;
    Size size_{};
    std::optional<Measurer> measurer_;
};

}  // namespace qel::host::calibration
