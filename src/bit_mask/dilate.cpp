// Dilation by a 3 x 3 square. The first and the last row see two rows only; a single row sees itself.
#include "qel/algorithm/bit_mask/dilate.hpp"

#include "bit_mask/morphology.hpp"

namespace qel::algorithm::bit_mask {
namespace {

// A band that stands in for a missing row changes nothing: OR with itself.
void DilatePair(RowKernels const& kernels, std::uint32_t const* src, std::uint32_t* dst, std::size_t words) {
    kernels.dilate(src, src, src + words, dst, 1, words);
}

}  // namespace

template <>
void DilateRow<2>(std::uint32_t const*& src, std::uint32_t*& dst, std::size_t words) {
    DilatePair(GetRowKernels(), src, dst, words);
    src += words;
    dst += words;
}

void Dilate(RowKernels const& kernels, std::uint32_t const* src, std::uint32_t* dst, std::size_t rows,
            std::size_t words) {
    if (rows == 0) return;
    if (rows == 1) return kernels.dilate(src, src, src, dst, 1, words);
    DilatePair(kernels, src, dst, words);
    kernels.dilate(src, src + words, src + 2 * words, dst + words, rows - 2, words);
    DilatePair(kernels, src + (rows - 2) * words, dst + (rows - 1) * words, words);
}

void Dilate8Way(std::uint32_t const* src, std::uint32_t* dst, std::size_t rows, std::size_t words) {
    Dilate(GetRowKernels(), src, dst, rows, words);
}

void DilateLine8Way(std::uint32_t const* above, std::uint32_t const* row, std::uint32_t const* below,
                    std::uint32_t* out, std::size_t words) {
    GetRowKernels().dilate(above, row, below, out, 1, words);
}

}  // namespace qel::algorithm::bit_mask
