// Packing bytes into a mask against a pixel-by-pixel comparison.
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/bit_mask/threshold.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using qel::algorithm::BitMask;
    qel::fuzz::Input input(data, size);
    BitMask::Size const shape = input.Size(300, 6);
    std::size_t const pitch = shape.width + input.Number(0, 40);
    std::uint8_t const threshold = input.Byte();
    // Exactly as many bytes as may be read: the last row ends without its padding.
    std::vector<std::uint8_t> pixels(shape.height == 0 ? 0 : pitch * (shape.height - 1) + shape.width);
    for (std::uint8_t& pixel : pixels) pixel = input.Byte();
    BitMask mask = input.Mask(input.Size(40, 3));
    qel::algorithm::bit_mask::Threshold(pixels.data(), pitch, shape, threshold, mask);

    BitMask expected(shape);
    for (unsigned int y = 0; y < shape.height; ++y) {
        for (unsigned int x = 0; x < shape.width; ++x) {
            if (pixels[y * pitch + x] > threshold) {
                expected.GetData()[y * expected.GetStride() + x / 32] |= 0x80000000U >> x % 32;
            }
        }
    }
    qel::fuzz::Check(mask == expected, "Threshold");
    return 0;
}
