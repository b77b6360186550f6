// Dilation and erosion of whole masks and of single lines against their reference.
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"
#include "reference/morphology.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel;
    fuzz::Input input(data, size);
    algorithm::BitMask const mask = input.Mask(input.Size(1200, 8));
    std::vector<std::uint32_t> const& src = mask.GetData();
    std::size_t const rows = mask.GetSize().height, words = mask.GetStride();
    std::vector<std::uint32_t> dst(src.size(), 0xABCDEF01U);
    algorithm::bit_mask::Dilate8Way(src.data(), dst.data(), rows, words);
    std::vector<std::uint32_t> const dilated = reference::Morphology(true, src, rows, words);
    fuzz::Check(dst == dilated, "Dilate8Way");
    algorithm::bit_mask::Erode8Way(src.data(), dst.data(), rows, words);
    std::vector<std::uint32_t> const eroded = reference::Morphology(false, src, rows, words);
    fuzz::Check(dst == eroded, "Erode8Way");
    for (std::size_t y = 1; y + 1 < rows; ++y) {
        std::uint32_t const* const row = src.data() + y * words;
        std::vector<std::uint32_t> line(words);
        algorithm::bit_mask::DilateLine8Way(row - words, row, row + words, line.data(), words);
        fuzz::Check(std::equal(line.begin(), line.end(), dilated.begin() + static_cast<std::ptrdiff_t>(y * words)),
                    "DilateLine8Way");
        algorithm::bit_mask::ErodeLine8Way(row - words, row, row + words, line.data(), words);
        fuzz::Check(std::equal(line.begin(), line.end(), eroded.begin() + static_cast<std::ptrdiff_t>(y * words)),
                    "ErodeLine8Way");
    }
    return 0;
}
