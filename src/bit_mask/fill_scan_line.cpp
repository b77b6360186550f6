#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

#include <algorithm>

#include "bit_mask/word_masks.hpp"

namespace qel::algorithm::bit_mask {

void FillScanLine(std::uint32_t* row, unsigned int first, unsigned int last, unsigned int value) {
    std::uint32_t* const begin = row + first / 32U;
    std::uint32_t* const end = row + last / 32U;
    std::uint32_t const head = HeadMask(first);
    std::uint32_t const tail = TailMask(last);
    if (begin == end) {
        *begin = value != 0 ? *begin | (head & tail) : *begin & ~(head & tail);
        return;
    }
    if (begin + 1 < end) std::fill(begin + 1, end, value != 0 ? ~0U : 0U);
    *begin = value != 0 ? *begin | head : *begin & ~head;
    *end = value != 0 ? *end | tail : *end & ~tail;
}

}  // namespace qel::algorithm::bit_mask
