#pragma once

#include <boost/core/span.hpp>

#include "opencv/opencv.hpp"
#include "qel/inference/picture.hpp"

namespace qel::inference {

/// Brings pictures into the format: blob becomes pictures x channels x height x width of 32-bit floats; its memory is
/// used again where the size stays. Smaller pictures are enlarged bilinearly, larger ones averaged over areas.
void MakeBlob(boost::span<Picture const> pictures, PictureFormat const& format, cv::Mat& blob);

}  // namespace qel::inference
