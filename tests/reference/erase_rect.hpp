#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"

namespace qel::reference {

/// The words after BitMask::EraseRect, asking of each word of each row whether it is in the span.
inline std::vector<std::uint32_t> EraseRect(algorithm::BitMask const& mask, geometry::Rectangle<int> const& rect,
                                            unsigned int value) {
    int const w = static_cast<int>(mask.GetSize().width), h = static_cast<int>(mask.GetSize().height);
    int const ys = std::max(std::min(h - 1, 0), rect.y0);
    int const ye = std::max(std::min(std::max(h - 1, 0), rect.y1), ys);
    int const xs = std::max(std::min(w - 1, 0), rect.x0);
    int const xe = std::max(std::min(std::max(w - 1, 0), rect.x1), xs);
    std::vector<std::uint32_t> words = mask.GetData();
    for (std::int64_t y = ys; y < ye; ++y) {
        std::int64_t const start = y * static_cast<std::int64_t>(mask.GetStride());
        for (std::int64_t i = 0; i < static_cast<std::int64_t>(words.size()); ++i) {
            bool const behindFirst = i >= start + (static_cast<std::uint32_t>(xs) >> 5);
            bool const beforeEnd = i < start + ((static_cast<std::uint32_t>(xe) - 1U) >> 5) + 1;
            if (behindFirst && beforeEnd) words[static_cast<std::size_t>(i)] = value != 0 ? 0xFFFFFFFFU : 0U;
        }
    }
    return words;
}

}  // namespace qel::reference
