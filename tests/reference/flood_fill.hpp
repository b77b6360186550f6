#pragma once

#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/point.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

/// The definition, pixel by pixel: dst, the seed, and what is 8-connected to it through src outside dst.
inline algorithm::BitMask FloodFill8Way(algorithm::BitMask const& src, algorithm::BitMask const& dst,
                                        geometry::Point<unsigned int, 2> const& seed) {
    algorithm::BitMask filled = dst.GetSize() == src.GetSize() ? dst : algorithm::BitMask(src.GetSize());
    algorithm::BitMask const blocked(filled);
    std::vector<geometry::Point<unsigned int, 2>> pending{seed};
    Set(filled, seed.x, seed.y);
    while (!pending.empty()) {
        geometry::Point<unsigned int, 2> const p = pending.back();
        pending.pop_back();
        for (unsigned int y = p.y - (p.y > 0 ? 1 : 0); y <= p.y + 1 && y < src.GetSize().height; ++y) {
            for (unsigned int x = p.x - (p.x > 0 ? 1 : 0); x <= p.x + 1 && x < src.GetSize().width; ++x) {
                if (!Get(src, x, y) || Get(blocked, x, y) || Get(filled, x, y)) continue;
                Set(filled, x, y);
                pending.push_back({x, y});
            }
        }
    }
    return filled;
}

}  // namespace qel::reference
