#include "oklch.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel::colour_classifier {
namespace {

/// The light of a component of sRGB (IEC 61966-2-1), 0 to 1.
double ToLinear(unsigned char component) {
    double const value = component / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

}  // namespace

Oklch ToOklch(media::colour::Rgb colour, double exposure) {
    double const red = std::min(1.0, ToLinear(colour.red) * exposure);
    double const green = std::min(1.0, ToLinear(colour.green) * exposure);
    double const blue = std::min(1.0, ToLinear(colour.blue) * exposure);
    // Responses of the three kinds of cones, then lightness and the two opponent colours.
    double const l = std::cbrt(0.4122214708 * red + 0.5363325363 * green + 0.0514459929 * blue);
    double const m = std::cbrt(0.2119034982 * red + 0.6806995451 * green + 0.1073969566 * blue);
    double const s = std::cbrt(0.0883024619 * red + 0.2817188376 * green + 0.6299787005 * blue);
    double const a = 1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s;
    double const b = 0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s;
    double const degrees = std::atan2(b, a) * 180 / std::numbers::pi;
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s, std::hypot(a, b),
            degrees < 0 ? degrees + 360 : degrees};
}

}  // namespace qel::colour_classifier
