#pragma once

#include <string>
#include <vector>

#include "calibration/calibration.hpp"

namespace qel::host::calibration {

/// A line of a grid on the ground as it is seen in a picture, in pixels; its ends may lie outside.
struct GridLine {
    Pixel from, to;
    /// Where it crosses the line straight ahead of the camera, for lines across that one; the label tells how far
    /// ahead.
    Pixel labelAt{};
    std::string label{};
};

/// Square meshes of a round number of metres around the point below the camera, about as wide as the camera is high.
std::vector<GridLine> MakeGroundGrid(Mounting<double> const& mounting, Size size);

}  // namespace qel::host::calibration
