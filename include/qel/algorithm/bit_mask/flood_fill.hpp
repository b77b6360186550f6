#pragma once

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/export.hpp"
#include "qel/geometry/point.hpp"

namespace qel::algorithm::bit_mask {

/// Adds to dst the seed and every foreground pixel of src that is 8-connected to it through foreground pixels of src
/// that are clear in dst: what dst holds already blocks the fill. The seed is written even where src is background.
/// A dst of another size is first made one of src's size, cleared. Requires value != 0 and a seed inside src: with
/// value 0 only the seed pixel is cleared, with a seed outside nothing is written.
QEL_ALGORITHM_EXPORT void FloodFill8Way(BitMask const& src, BitMask& dst, geometry::Point<unsigned int, 2> const& seed,
                                        unsigned int value);

}  // namespace qel::algorithm::bit_mask
