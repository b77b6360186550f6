#pragma once

#include "calibration/calibration.hpp"
#include "picture.hpp"

namespace qel::host::calibration {

/// Draws the grid in metres on the ground, as a camera of that mounting sees it, on a picture.
/// frameSize: what the camera gives; the picture may be a scaled copy of it.
void DrawGroundGrid(Picture& picture, Picture::Size frameSize, Mounting<double> const& mounting);

}  // namespace qel::host::calibration
