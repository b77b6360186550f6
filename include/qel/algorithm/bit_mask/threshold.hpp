#pragma once

#include <cstddef>
#include <cstdint>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/export.hpp"

namespace qel::algorithm::bit_mask {

/// Packs an image of one byte a pixel into mask: pixels above the threshold are set, all others and the padding clear.
/// pixels: size.height rows of size.width bytes, pitch bytes from row to row. The mask takes that size, allocating
/// only when it has another one.
QEL_ALGORITHM_EXPORT void Threshold(std::uint8_t const* pixels, std::size_t pitch, BitMask::Size size,
                                    std::uint8_t threshold, BitMask& mask);

}  // namespace qel::algorithm::bit_mask
