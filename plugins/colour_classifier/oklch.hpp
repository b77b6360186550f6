#pragma once

#include "qel/media/colour/rgb.hpp"

namespace qel::colour_classifier {

/// A colour as people see it: OKLab (Bjoern Ottosson, "A perceptual color space for image processing", 2020,
/// bottosson.github.io/posts/oklab) in polar form, as in CSS Color Module Level 4.
struct Oklch {
    double lightness = 0;  ///< 0 black to 1 white
    double chroma = 0;     ///< 0 a shade of grey, to about 0.32
    double hue = 0;        ///< degrees, 0 to below 360; 29 red, 142 green, 264 blue; means little for a small chroma
};

/// exposure: what the light is multiplied by first; 1 leaves it as it is.
Oklch ToOklch(media::colour::Rgb colour, double exposure = 1);

}  // namespace qel::colour_classifier
