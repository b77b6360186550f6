// Erosion by a 3 x 3 square. Outside is background: the first and the last row are always cleared.
#include "qel/algorithm/bit_mask/erode.hpp"

#include <algorithm>

#include "bit_mask/morphology.hpp"

namespace qel::algorithm::bit_mask {

void Erode(RowKernels const& kernels, std::uint32_t const* src, std::uint32_t* dst, std::size_t rows,
           std::size_t words) {
    if (rows < 3) {
        std::fill_n(dst, rows * words, 0U);
        return;
    }
    std::fill_n(dst, words, 0U);
    kernels.erode(src, src + words, src + 2 * words, dst + words, rows - 2, words);
    std::fill_n(dst + (rows - 1) * words, words, 0U);
}

void Erode8Way(std::uint32_t const* src, std::uint32_t* dst, std::size_t rows, std::size_t words) {
    Erode(GetRowKernels(), src, dst, rows, words);
}

void ErodeLine8Way(std::uint32_t const* above, std::uint32_t const* row, std::uint32_t const* below, std::uint32_t* out,
                   std::size_t words) {
    GetRowKernels().erode(above, row, below, out, 1, words);
}

}  // namespace qel::algorithm::bit_mask
