#pragma once

// What the privacy mask does, one pixel after the other.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "qel/geometry/polygon.hpp"

namespace qel::reference {

/// Whether the segment has a point within reach of (x, y) in both directions, cut by cut.
inline bool MeetsSquare(geometry::Point<double, 2> a, geometry::Point<double, 2> b, double x, double y, double reach) {
    double first = 0, last = 1;
    auto const cut = [&](double start, double step, double centre) {
        if (step == 0) return std::abs(start - centre) <= reach;
        double const one = (centre - reach - start) / step, other = (centre + reach - start) / step;
        first = std::max(first, std::min(one, other));
        last = std::min(last, std::max(one, other));
        return true;
    };
    return cut(a.x, b.x - a.x, x) && cut(a.y, b.y - a.y, y) && first <= last;
}

/// Whether the polygon, its inside being what an odd number of its sides lies right of, touches the square around
/// (x, y) of twice the reach.
inline bool Touches(geometry::Polygon<double> const& polygon, double x, double y, double reach) {
    bool inside = false;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        auto const& a = polygon[i];
        auto const& b = polygon[(i + 1) % polygon.size()];
        if (MeetsSquare(a, b, x, y, reach)) return true;
        if ((a.y > y) != (b.y > y) && x < a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x)) inside = !inside;
    }
    return inside;
}

/// A plane without padding: width x height samples of so many bytes.
struct Samples {
    std::size_t width, height, bytes;
    std::vector<std::uint8_t> data;

    std::uint8_t& At(std::size_t x, std::size_t y, std::size_t channel) {
        return data[(y * width + x) * bytes + channel];
    }
};

/// The plane with each masked sample replaced by the mean of its block; the last blocks take what is left over.
inline Samples Pixelated(Samples plane, std::size_t block,
                         std::function<bool(std::size_t, std::size_t)> const& masked) {
    Samples source = plane;
    auto const range = [block](std::size_t at, std::size_t size) {
        std::size_t const index = std::min(at / block, size / block - 1);
        return std::pair{index * block, index == size / block - 1 ? size : (index + 1) * block};
    };
    for (std::size_t y = 0; y < plane.height; ++y) {
        for (std::size_t x = 0; x < plane.width; ++x) {
            if (!masked(x, y)) continue;
            auto const [left, right] = range(x, plane.width);
            auto const [top, bottom] = range(y, plane.height);
            for (std::size_t channel = 0; channel < plane.bytes; ++channel) {
                std::size_t sum = 0, count = (right - left) * (bottom - top);
                for (std::size_t v = top; v < bottom; ++v) {
                    for (std::size_t u = left; u < right; ++u) sum += source.At(u, v, channel);
                }
                plane.At(x, y, channel) =
                    static_cast<std::uint8_t>(std::floor(static_cast<double>(sum) / static_cast<double>(count) + 0.5));
            }
        }
    }
    return plane;
}

/// The plane with each masked sample replaced by the same bytes.
inline Samples Blanked(Samples plane, std::vector<std::uint8_t> const& black,
                       std::function<bool(std::size_t, std::size_t)> const& masked) {
    for (std::size_t y = 0; y < plane.height; ++y) {
        for (std::size_t x = 0; x < plane.width; ++x) {
            for (std::size_t channel = 0; masked(x, y) && channel < plane.bytes; ++channel) {
                plane.At(x, y, channel) = black[channel];
            }
        }
    }
    return plane;
}

}  // namespace qel::reference
