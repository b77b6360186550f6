#pragma once

#include <memory>

#include <leptonica/allheaders.h>
#include <opencv2/core.hpp>

#include "qel/algorithm/bit_mask.hpp"

namespace qel::benchmarks {

struct PixDeleter {
    void operator()(Pix* pix) const noexcept { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<Pix, PixDeleter>;

/// The mask as a Leptonica image of one bit a pixel: the same words.
PixPtr ToPix(algorithm::BitMask const& mask);
/// The mask as an OpenCV image of one byte a pixel, 0 or 255.
cv::Mat ToMat(algorithm::BitMask const& mask);

/// Whether a peer's image has the mask's pixels, but for margin rows and columns along the rim.
bool Equal(algorithm::BitMask const& mask, Pix* pix, unsigned int margin = 0);
bool Equal(algorithm::BitMask const& mask, cv::Mat const& image, unsigned int margin = 0);

/// Ends the program with a message unless the condition holds: nothing is timed that is not equal.
void Require(bool condition, std::string const& message);

}  // namespace qel::benchmarks
