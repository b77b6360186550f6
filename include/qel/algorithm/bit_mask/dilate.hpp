#pragma once

#include <cstddef>
#include <cstdint>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::bit_mask {

/// Sets every pixel of dst that is set in src or has one of its 8 neighbours set there.
/// src, dst: rows x words words without gaps, not overlapping. Outside counts as background; padding bits are
/// ordinary neighbours, so a set last pixel spreads into its row's padding.
QEL_ALGORITHM_EXPORT void Dilate8Way(std::uint32_t const* src, std::uint32_t* dst, std::size_t rows, std::size_t words);

/// One row of it: out receives the dilation of row between the rows above and below it, words words each.
/// out must not overlap the others.
QEL_ALGORITHM_EXPORT void DilateLine8Way(std::uint32_t const* above, std::uint32_t const* row,
                                         std::uint32_t const* below, std::uint32_t* out, std::size_t words);

}  // namespace qel::algorithm::bit_mask
