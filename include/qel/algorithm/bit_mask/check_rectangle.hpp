#pragma once

#include <cstdint>

#include "qel/algorithm/export.hpp"
#include "qel/geometry/dimension.hpp"
#include "qel/geometry/rectangle.hpp"

namespace qel::algorithm::bit_mask {

/// Whether any pixel in columns x0 to x1 - 1 and rows y0 to y1 - 1 is set; false without rows.
/// words: the mask's first word; of size only the width is read. Requires x0 < x1 <= width and rows inside the mask;
/// rows are not checked, columns outside a row are left out.
[[nodiscard]] QEL_ALGORITHM_EXPORT bool CheckRectangle(std::uint32_t const* words,
                                                       geometry::Dimension<unsigned int, 2> const& size,
                                                       geometry::Rectangle<unsigned int> const& rect);

}  // namespace qel::algorithm::bit_mask
