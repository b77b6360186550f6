// The fill against its definition, from several seeds into the same destination.
#include <cstdint>

#include "input.hpp"
#include "qel/algorithm/bit_mask/flood_fill.hpp"
#include "reference/flood_fill.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel;
    fuzz::Input input(data, size);
    algorithm::BitMask::Size const extent{input.Number(1, 600), input.Number(1, 48)};
    bool const fresh = input.Byte() % 2 == 0;
    unsigned int const seeds = input.Byte() % 4 + 1U;
    geometry::Point<unsigned int, 2> points[4];
    for (auto& point : points) point = {input.Number(0, extent.width - 1), input.Number(0, extent.height - 1)};
    algorithm::BitMask const src = input.Mask(extent);
    algorithm::BitMask dst = fresh ? algorithm::BitMask() : input.Mask(extent);
    for (unsigned int i = 0; i < seeds; ++i) {
        algorithm::BitMask const expected = reference::FloodFill8Way(src, dst, points[i]);
        algorithm::bit_mask::FloodFill8Way(src, dst, points[i], 1);
        fuzz::Check(dst == expected, "FloodFill8Way");
    }
    return 0;
}
