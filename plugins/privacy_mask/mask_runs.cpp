#include "mask_runs.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;

/// In one go over the row, without a branch a word.
bool IsEmpty(std::uint32_t const* row, std::size_t words) {
    std::uint32_t any = 0;
    for (std::size_t i = 0; i < words; ++i) any |= row[i];
    return any == 0;
}

/// Pixel i of the result, of 16 in the lower half, is set when pixel 2 i or 2 i + 1 of the word is.
std::uint32_t HalveWord(std::uint32_t word) {
    std::uint32_t bits = ((word | word << 1) >> 1) & 0x55555555U;
    bits = (bits | bits >> 1) & 0x33333333U;
    bits = (bits | bits >> 2) & 0x0f0f0f0fU;
    bits = (bits | bits >> 4) & 0x00ff00ffU;
    return (bits | bits >> 8) & 0x0000ffffU;
}

/// Adds the runs of a word at a column; one that begins where the last run ends makes that longer.
void AddRuns(std::uint32_t word, unsigned int row, unsigned int column, std::size_t rowStart,
             std::vector<PixelRun>& runs) {
    while (word != 0) {
        auto const skip = static_cast<unsigned int>(std::countl_zero(word));
        auto const length = static_cast<unsigned int>(std::countl_one(word << skip));
        unsigned int const first = column + skip;
        if (runs.size() > rowStart && runs.back().last == first) {
            runs.back().last += length;
        } else {
            runs.push_back({row, first, first + length});
        }
        if (skip + length >= 32) return;
        word &= ~0U >> (skip + length);
    }
}

}  // namespace

void FindRuns(BitMask const& mask, std::vector<PixelRun>& runs) {
    runs.clear();
    std::size_t const stride = mask.GetStride();
    std::uint32_t const* word = mask.GetData().data();
    for (unsigned int row = 0; row < mask.GetSize().height; ++row, word += stride) {
        if (IsEmpty(word, stride)) continue;
        std::size_t const rowStart = runs.size();
        for (std::size_t i = 0; i < stride; ++i) {
            if (word[i] != 0) AddRuns(word[i], row, static_cast<unsigned int>(32 * i), rowStart, runs);
        }
    }
}

void Halve(BitMask const& mask, BitMask& half) {
    auto const [width, height] = mask.GetSize();
    half.Resize({width / 2 + width % 2, height / 2 + height % 2});
    std::size_t const stride = mask.GetStride(), halfStride = half.GetStride();
    for (unsigned int y = 0; y < height; ++y) {
        std::uint32_t const* const row = mask.GetData().data() + y * stride;
        if (IsEmpty(row, stride)) continue;
        std::uint32_t* const out = half.GetData().data() + y / 2 * halfStride;
        for (std::size_t i = 0; i < stride; ++i) {
            if (row[i] != 0) out[i / 2] |= HalveWord(row[i]) << (i % 2 == 0 ? 16 : 0);
        }
    }
}

}  // namespace qel::privacy_mask
