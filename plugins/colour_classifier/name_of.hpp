#pragma once

#include "colour.hpp"
#include "oklch.hpp"

namespace qel::colour_classifier {

/// What a person calls a colour.
/// neutralChroma: the smallest chroma of a colour of middle lightness that is no shade of grey; 0.04 is usual.
Colour NameOf(Oklch const& colour, double neutralChroma);

}  // namespace qel::colour_classifier
