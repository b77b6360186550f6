#pragma once

#include <cstddef>
#include <cstdint>

namespace qel::algorithm::concom {

/// 64 pixels of a row, the first in the highest bit.
using Lane = std::uint64_t;

/// In a row of width pixels.
constexpr std::size_t CountLanes(unsigned int width) { return width / 64U + (width % 64U != 0 ? 1U : 0U); }

/// The bit of a column in its lane.
constexpr Lane ColumnBit(std::uint32_t column) { return Lane{1} << (~column & 63U); }

/// Bits of a row's last word that lie behind the row.
constexpr std::uint32_t PaddingMask(unsigned int width) { return width % 32U == 0 ? 0U : ~0U >> width % 32U; }

/// Lane i of a row of words; what lies behind the row is clear.
[[gnu::always_inline]] inline Lane LoadLane(std::uint32_t const* words, unsigned int width, std::size_t i) {
    std::size_t const left = width - 64 * i;
    if (left >= 64) return Lane{words[2 * i]} << 32U | words[2 * i + 1];
    if (left <= 32) return Lane{words[2 * i] & ~PaddingMask(width)} << 32U;
    return Lane{words[2 * i]} << 32U | (words[2 * i + 1] & ~PaddingMask(width));
}

}  // namespace qel::algorithm::concom
