#pragma once

#include <cstddef>

#include "qel/algorithm/bit_mask.hpp"

namespace qel::plugin {

/// Clears the bits behind the image in the last word of each row, as dilation leaves them: a further one would bring
/// them back into the image.
inline void ClearPadding(algorithm::BitMask& mask) {
    unsigned int const used = mask.GetSize().width % 32;
    if (used == 0) return;
    std::size_t const stride = mask.GetStride();
    auto& words = mask.GetData();
    for (std::size_t last = stride - 1; last < words.size(); last += stride) words[last] &= ~(~0U >> used);
}

}  // namespace qel::plugin
