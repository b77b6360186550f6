#pragma once

#include <cstdint>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/rectangle.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

/// The mask after FillRectangle, pixel by pixel: the last row and the last column are out of reach.
inline algorithm::BitMask FillRectangle(algorithm::BitMask mask, geometry::Rectangle<int> const& rect,
                                        unsigned int value) {
    for (unsigned int y = 0; y + 1 < mask.GetSize().height; ++y) {
        for (unsigned int x = 0; x + 1 < mask.GetSize().width; ++x) {
            std::int64_t const column = x, row = y;
            if (rect.x0 <= column && column < rect.x1 && rect.y0 <= row && row < rect.y1) Set(mask, x, y, value != 0);
        }
    }
    return mask;
}

/// Whether a pixel inside the rectangle is set.
inline bool CheckRectangle(algorithm::BitMask const& mask, geometry::Rectangle<unsigned int> const& rect) {
    for (unsigned int y = rect.y0; y < rect.y1; ++y) {
        for (unsigned int x = rect.x0; x < rect.x1; ++x) {
            if (Get(mask, x, y)) return true;
        }
    }
    return false;
}

/// The mask with columns first to last, both inclusive, of row y set or cleared.
inline algorithm::BitMask FillScanLine(algorithm::BitMask mask, unsigned int y, unsigned int first, unsigned int last,
                                       unsigned int value) {
    for (unsigned int x = first; x <= last; ++x) Set(mask, x, y, value != 0);
    return mask;
}

}  // namespace qel::reference
