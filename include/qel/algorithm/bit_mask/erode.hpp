#pragma once

#include <cstddef>
#include <cstdint>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::bit_mask {

/// Keeps in dst the pixels that are set in src with all their 8 neighbours.
/// src, dst: rows x words words without gaps, not overlapping. Outside counts as background: the first and last row
/// and the first and last bit of every row become background; padding bits are ordinary neighbours.
QEL_ALGORITHM_EXPORT void Erode8Way(std::uint32_t const* src, std::uint32_t* dst, std::size_t rows, std::size_t words);

/// One row of it: out receives the erosion of row between the rows above and below it, words words each.
/// out must not overlap the others.
QEL_ALGORITHM_EXPORT void ErodeLine8Way(std::uint32_t const* above, std::uint32_t const* row,
                                        std::uint32_t const* below, std::uint32_t* out, std::size_t words);

}  // namespace qel::algorithm::bit_mask
