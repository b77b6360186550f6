// Method: shades first, by chroma and lightness; then sectors of the hue circle, each with borders of lightness and
// chroma between the names that share it: a dark orange is brown, a light red is pink. docs/colour_classifier.md draws
// the borders.
#include "name_of.hpp"

#include <algorithm>

namespace qel::colour_classifier {
namespace {

/// In the dark a camera's noise has more chroma than it shows, and a person sees none; dark blue, as of jeans, is seen
/// all the same.
double SmallestChroma(Oklch const& colour, double neutralChroma) {
    bool const isDarkBlue = colour.lightness > 0.20 && colour.lightness < 0.45 && colour.hue > 215 && colour.hue < 285;
    return isDarkBlue ? 0.75 * neutralChroma : neutralChroma + 0.10 * std::max(0.0, 0.40 - colour.lightness);
}

Colour NameOfShade(double lightness) {
    if (lightness < 0.36) return Colour::Black;
    return lightness < 0.87 ? Colour::Grey : Colour::White;
}

/// Hues from pink to red: those before 20 degrees, or behind 180, lean towards pink.
Colour NameOfRed(Oklch const& colour) {
    bool const leansToPink = colour.hue < 20 || colour.hue > 180;
    if (leansToPink && colour.lightness > 0.64 && colour.chroma < 0.15) return Colour::Pink;
    if (colour.lightness > 0.70 && colour.chroma < 0.17) return colour.hue < 30 ? Colour::Pink : Colour::Orange;
    bool const isDull = colour.chroma < 0.085 && colour.lightness < 0.65;
    return isDull && !leansToPink ? Colour::Brown : Colour::Red;
}

/// Ivory and cream.
bool IsOffWhite(Oklch const& colour) { return colour.lightness > 0.86 && colour.chroma < 0.07; }

/// Hues between red and yellow.
Colour NameOfOrange(Oklch const& colour) {
    if (IsOffWhite(colour)) return Colour::White;
    return colour.lightness > 0.64 && colour.chroma > 0.125 ? Colour::Orange : Colour::Brown;
}

Colour NameOfYellow(Oklch const& colour) {
    if (IsOffWhite(colour)) return Colour::White;
    if (colour.lightness > 0.72 && colour.chroma > 0.085) return Colour::Yellow;
    double const olive = colour.lightness > 0.72 ? 108 : 98;
    return colour.hue < olive ? Colour::Brown : Colour::Green;
}

}  // namespace

Colour NameOf(Oklch const& colour, double neutralChroma) {
    double const hue = colour.hue;
    if (colour.lightness < 0.18 || colour.chroma < SmallestChroma(colour, neutralChroma)) {
        return NameOfShade(colour.lightness);
    }
    if (hue < 40) return NameOfRed(colour);
    if (hue < 84) return NameOfOrange(colour);
    if (hue < 115) return NameOfYellow(colour);
    if (hue < 190) return Colour::Green;
    if (hue < 290) return Colour::Blue;
    if (hue < 315) return Colour::Purple;
    if (hue < 345) return colour.lightness > 0.65 ? Colour::Pink : Colour::Purple;
    return hue < 355 || colour.lightness > 0.62 ? Colour::Pink : NameOfRed(colour);
}

}  // namespace qel::colour_classifier
