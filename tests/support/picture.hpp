#pragma once

#include <string_view>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "reference/pixels.hpp"

namespace qel::support {

/// A mask from one text a row: '#' is set. Padding is set or clear.
inline algorithm::BitMask Picture(std::vector<std::string_view> const& rows, bool padding = false) {
    algorithm::BitMask mask({static_cast<unsigned int>(rows[0].size()), static_cast<unsigned int>(rows.size())});
    mask.Fill(padding ? 1 : 0);
    for (unsigned int y = 0; y < rows.size(); ++y) {
        for (unsigned int x = 0; x < rows[y].size(); ++x) reference::Set(mask, x, y, rows[y][x] == '#');
    }
    return mask;
}

}  // namespace qel::support
