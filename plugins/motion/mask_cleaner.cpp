#include "mask_cleaner.hpp"

#include <cstddef>
#include <cstdint>

#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"

namespace qel::motion {
namespace {

using algorithm::BitMask;

/// Dilation spreads into the padding, and a further one would bring that back into the image.
void ClearPadding(BitMask& mask) {
    unsigned int const used = mask.GetSize().width % 32;
    if (used == 0) return;
    std::size_t const stride = mask.GetStride();
    auto& words = mask.GetData();
    for (std::size_t last = stride - 1; last < words.size(); last += stride) words[last] &= ~(~0U >> used);
}

}  // namespace

void MaskCleaner::Clean(BitMask& mask, unsigned int openings, unsigned int closings) {
    if (mask.GetData().empty()) return;
    if (scratch_.GetSize() != mask.GetSize()) scratch_.Resize(mask.GetSize());
    Erode(mask, openings);
    Dilate(mask, openings);
    Dilate(mask, closings);
    Erode(mask, closings);
}

void MaskCleaner::Erode(BitMask& mask, unsigned int times) {
    for (unsigned int i = 0; i < times; ++i) {
        algorithm::bit_mask::Erode8Way(mask.GetData().data(), scratch_.GetData().data(), mask.GetSize().height,
                                       mask.GetStride());
        mask.GetData().swap(scratch_.GetData());
    }
}

void MaskCleaner::Dilate(BitMask& mask, unsigned int times) {
    for (unsigned int i = 0; i < times; ++i) {
        algorithm::bit_mask::Dilate8Way(mask.GetData().data(), scratch_.GetData().data(), mask.GetSize().height,
                                        mask.GetStride());
        mask.GetData().swap(scratch_.GetData());
        ClearPadding(mask);
    }
}

}  // namespace qel::motion
