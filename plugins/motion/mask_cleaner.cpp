#include "mask_cleaner.hpp"

#include "common/clear_padding.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"

namespace qel::motion {
using algorithm::BitMask;

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
        plugin::ClearPadding(mask);
    }
}

}  // namespace qel::motion
