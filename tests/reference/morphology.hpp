#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel::reference {

/// The dilation or erosion of rows x words words, bit by bit; every bit outside is background.
inline std::vector<std::uint32_t> Morphology(bool dilation, std::vector<std::uint32_t> const& src, std::size_t rows,
                                             std::size_t words) {
    auto const get = [&](std::ptrdiff_t x, std::ptrdiff_t y) {
        if (x < 0 || y < 0 || x >= static_cast<std::ptrdiff_t>(32 * words) || y >= static_cast<std::ptrdiff_t>(rows)) {
            return false;
        }
        std::size_t const column = static_cast<std::size_t>(x);
        return (src[static_cast<std::size_t>(y) * words + column / 32] >> (31 - column % 32) & 1U) != 0;
    };
    std::vector<std::uint32_t> dst(rows * words);
    for (std::size_t y = 0; y < rows; ++y) {
        for (std::size_t x = 0; x < 32 * words; ++x) {
            int count = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    count += get(static_cast<std::ptrdiff_t>(x) + dx, static_cast<std::ptrdiff_t>(y) + dy) ? 1 : 0;
                }
            }
            if (dilation ? count > 0 : count == 9) dst[y * words + x / 32] |= 1U << (31 - x % 32);
        }
    }
    return dst;
}

}  // namespace qel::reference
