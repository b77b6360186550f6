#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "qel/media/colour/rgb.hpp"

namespace qel::colour_classifier {

/// The eleven basic colour terms (Berlin and Kay, "Basic Color Terms", 1969); the three shades come first.
enum class Colour : std::uint8_t { Black, White, Grey, Red, Orange, Brown, Yellow, Green, Blue, Purple, Pink };

inline constexpr std::size_t ColourCount = 11;

/// A basic colour as it is published.
struct NamedColour {
    char const* name;
    /// The sRGB value that is published for it: CSS's colour of that name; brown is its "saddlebrown", which is less
    /// red.
    media::colour::Rgb rgb;
};

/// In the order of Colour.
inline constexpr std::array<NamedColour, ColourCount> BasicColours{{
    {"black", {0, 0, 0}},
    {"white", {255, 255, 255}},
    {"grey", {128, 128, 128}},
    {"red", {255, 0, 0}},
    {"orange", {255, 165, 0}},
    {"brown", {139, 69, 19}},
    {"yellow", {255, 255, 0}},
    {"green", {0, 128, 0}},
    {"blue", {0, 0, 255}},
    {"purple", {128, 0, 128}},
    {"pink", {255, 192, 203}},
}};

}  // namespace qel::colour_classifier
