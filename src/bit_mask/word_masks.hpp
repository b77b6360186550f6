#pragma once

#include <cstdint>

namespace qel::algorithm::bit_mask {

/// Column k and the columns after it, of the word that holds k.
constexpr std::uint32_t HeadMask(unsigned int k) { return ~0U >> k % 32U; }

/// Column k and the columns before it, of the word that holds k.
constexpr std::uint32_t TailMask(unsigned int k) { return ~0U << (31U - k % 32U); }

}  // namespace qel::algorithm::bit_mask
