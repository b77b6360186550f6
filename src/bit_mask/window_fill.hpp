#pragma once

#include <cstddef>
#include <cstdint>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/point.hpp"

namespace qel::algorithm::bit_mask {

/// FloodFill8Way, of the first height rows of two masks of one size, for a region that lies inside 64 columns around
/// the seed, or is a body with a ragged rim inside 128 or 256; false, with nothing changed, for any other. Requires a
/// seed inside those rows.
bool FillWindow(BitMask const& src, BitMask& dst, std::size_t height, geometry::Point<unsigned int, 2> const& seed);

}  // namespace qel::algorithm::bit_mask
