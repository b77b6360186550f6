#include "qel/algorithm/bit_mask/threshold.hpp"

#include "bit_mask/threshold_kernels.hpp"

namespace qel::algorithm::bit_mask {

void Threshold(std::uint8_t const* pixels, std::size_t pitch, BitMask::Size size, std::uint8_t threshold,
               BitMask& mask) {
    std::size_t const stride = (size.width + 31U) / 32U;
    if (mask.GetSize() != size || mask.GetData().size() != stride * size.height) mask.Resize(size);
    if (stride == 0) return;
    ThresholdKernel const pack = GetThresholdKernel();
    std::uint32_t* words = mask.GetData().data();
    for (unsigned int y = 0; y < size.height; ++y, words += stride)
        pack(pixels + y * pitch, size.width, threshold, words);
}

}  // namespace qel::algorithm::bit_mask
