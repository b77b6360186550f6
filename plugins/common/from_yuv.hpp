#pragma once

#include <algorithm>

#include "qel/media/colour/rgb.hpp"

namespace qel::plugin {

/// By ITU-R BT.601 with video levels: luma 16 is black and 235 white. Integers scaled by 2^16, rounded to nearest.
inline media::colour::Rgb FromYuv(int y, int u, int v) {
    int const luma = 76309 * (y - 16) + (1 << 15);
    auto const level = [](int value) { return static_cast<unsigned char>(std::clamp(value >> 16, 0, 255)); };
    return {level(luma + 104597 * (v - 128)), level(luma - 25674 * (u - 128) - 53278 * (v - 128)),
            level(luma + 132201 * (u - 128))};
}

}  // namespace qel::plugin
