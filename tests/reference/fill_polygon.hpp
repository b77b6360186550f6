#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include <boost/polygon/polygon.hpp>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/polygon.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

/// The trapezoids of the polygons' region, with Boost.Polygon's own types.
inline std::vector<boost::polygon::polygon_data<int>> Trapezoids(std::vector<geometry::Polygon<int>> const& polygons) {
    using namespace boost::polygon::operators;
    boost::polygon::polygon_set_data<int> region;
    for (geometry::Polygon<int> const& polygon : polygons) {
        std::vector<boost::polygon::point_data<int>> points;
        for (auto const& point : polygon) points.emplace_back(point.x, point.y);
        boost::polygon::polygon_data<int> data;
        data.set(points.begin(), points.end());
        region ^= data;
    }
    std::vector<boost::polygon::polygon_data<int>> trapezoids;
    region.get_trapezoids(trapezoids, boost::polygon::HORIZONTAL);
    return trapezoids;
}

/// Whether a trapezoid is a line only: fewer than three points, but for the one that closes it.
inline bool IsSpike(std::vector<boost::polygon::point_data<int>> const& points) {
    return points.size() < (points.front() == points.back() ? 4U : 3U);
}

/// The mask after FillPolygonSet: each row of each trapezoid worked out for itself, in 64 bits, pixel by pixel.
inline algorithm::BitMask FillPolygonSet(algorithm::BitMask mask, std::vector<geometry::Polygon<int>> const& polygons,
                                         unsigned int value) {
    using Number = std::int64_t;
    Number const width = mask.GetSize().width, height = mask.GetSize().height;
    for (auto const& trapezoid : Trapezoids(polygons)) {
        std::vector<boost::polygon::point_data<int>> const points(trapezoid.begin(), trapezoid.end());
        if (IsSpike(points)) continue;
        std::vector<Number> ys;
        for (auto const& p : points) ys.push_back(p.y());
        auto const [least, most] = std::minmax_element(ys.begin(), ys.end());
        Number const yMin = *least, yMax = *most;
        auto const span = [&](Number y, bool largest) {
            std::vector<Number> xs;
            for (auto const& p : points) {
                if (p.y() == y) xs.push_back(p.x());
            }
            return largest ? *std::max_element(xs.begin(), xs.end()) : *std::min_element(xs.begin(), xs.end());
        };
        Number xa0 = span(yMin, false), xa1 = span(yMin, true), xb0 = span(yMax, false), xb1 = span(yMax, true);
        if (yMax < 0 || yMin >> 4 >= height) continue;
        Number yStart = (yMin + 8) >> 4 << 4, yEnd = (yMax + 8) >> 4 << 4, dy = yEnd - yStart;
        if (dy <= 0) continue;
        if (yStart < 0) {
            xa0 = (xa0 * yEnd + -yStart * xb0) / dy;
            xa1 = (xa1 * yEnd + -yStart * xb1) / dy;
            yStart = 0;
            dy = yEnd;
            if (yEnd == 0) continue;
        }
        if (yEnd >= 16 * height) {
            Number const yTop = 16 * (height - 1), d = yTop - yStart;
            if (d < 1) continue;
            xb0 = ((yEnd - yTop) * xa0 + d * xb0) / dy;
            xb1 = ((yEnd - yTop) * xa1 + d * xb1) / dy;
            yEnd = yTop;
            dy = d;
        }
        for (Number y = yStart; y <= yEnd; y += 16) {
            Number const left = (xa0 * dy + (xb0 - xa0) * (y - yStart)) / dy;
            Number const right = (xa1 * dy + (xb1 - xa1) * (y - yStart)) / dy;
            for (Number x = std::max<Number>((left + 8) >> 4, 0); x <= (right + 8) >> 4 && x < width; ++x) {
                Set(mask, static_cast<unsigned int>(x), static_cast<unsigned int>(y / 16), value != 0);
            }
        }
    }
    return mask;
}

}  // namespace qel::reference
