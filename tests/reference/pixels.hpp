#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

#include "qel/algorithm/bit_mask.hpp"

namespace qel::reference {

/// Pixel (x, y) of a mask, counted bit by bit.
inline bool Get(algorithm::BitMask const& mask, unsigned int x, unsigned int y) {
    return ((mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32)) & 1U) != 0;
}

/// Sets or clears pixel (x, y); x may reach into the row's padding.
inline void Set(algorithm::BitMask& mask, unsigned int x, unsigned int y, bool value = true) {
    std::uint32_t& word = mask.GetData()[y * mask.GetStride() + x / 32];
    std::uint32_t const bit = 1U << (31 - x % 32);
    word = value ? word | bit : word & ~bit;
}

/// A mask each of whose bits, padding included, is set with the given chance in percent.
inline algorithm::BitMask Noise(algorithm::BitMask::Size size, unsigned int percent, std::mt19937& random) {
    algorithm::BitMask mask(size);
    for (std::uint32_t& word : mask.GetData()) {
        for (int bit = 0; bit < 32; ++bit) word = word << 1 | (random() % 100 < percent ? 1U : 0U);
    }
    return mask;
}

/// A number from first to last, both inclusive.
inline unsigned int Draw(std::mt19937& random, unsigned int first, unsigned int last) {
    return first + static_cast<unsigned int>(random()) % (last - first + 1);
}

}  // namespace qel::reference
