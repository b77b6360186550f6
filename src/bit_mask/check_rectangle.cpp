#include "qel/algorithm/bit_mask/check_rectangle.hpp"

#include <algorithm>
#include <cstddef>

#include "bit_mask/word_masks.hpp"

namespace qel::algorithm::bit_mask {

bool CheckRectangle(std::uint32_t const* words, geometry::Dimension<unsigned int, 2> const& size,
                    geometry::Rectangle<unsigned int> const& rect) {
    std::size_t const stride = (size.width + 31U) / 32U;
    std::size_t const first = rect.x0 / 32U;
    std::size_t const last = (rect.x1 - 1U) / 32U;
    std::uint32_t const head = HeadMask(rect.x0);
    std::uint32_t const tail = TailMask(rect.x1 - 1U);
    // Only a rectangle that breaks the contract has words outside the row; reading stops there.
    if (first >= stride) return false;
    std::size_t const stop = std::min(last, stride);
    for (unsigned int y = rect.y0; y < rect.y1; ++y) {
        std::uint32_t const* const row = words + y * stride;
        if (first == last) {
            if ((row[first] & head & tail) != 0) return true;
            continue;
        }
        for (std::size_t i = first + 1; i < stop; ++i) {
            if (row[i] != 0) return true;
        }
        if ((row[first] & head) != 0 || (last < stride && (row[last] & tail) != 0)) return true;
    }
    return false;
}

}  // namespace qel::algorithm::bit_mask
