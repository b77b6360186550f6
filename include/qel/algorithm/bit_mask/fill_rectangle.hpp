#pragma once

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/export.hpp"
#include "qel/geometry/rectangle.hpp"

namespace qel::algorithm::bit_mask {

/// Sets (value != 0) or clears columns x0 to x1 - 1 of rows y0 to y1 - 1, exact to the pixel.
/// The bounds are cut to 0 and to width - 1 and height - 1: the last column and the last row are never written.
/// Corners in the wrong order write nothing.
QEL_ALGORITHM_EXPORT void FillRectangle(BitMask& mask, geometry::Rectangle<int> const& rect, unsigned int value);

}  // namespace qel::algorithm::bit_mask
