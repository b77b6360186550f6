// Polygons in pixels: checked, then rounded to the sixteenths that the fill works in.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "qel/algorithm/bit_mask/fill_polygon.hpp"

namespace qel::algorithm::bit_mask {
namespace {

constexpr double FarthestPixel = 1 << 22;

/// To sixteenths, halves upwards as everywhere in the fill.
int ToSixteenths(double pixels) { return static_cast<int>(std::floor(pixels * 16.0 + 0.5)); }

geometry::Polygon<int> ToSixteenths(geometry::Polygon<double> const& polygon, std::size_t index) {
    geometry::Polygon<int> converted;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        geometry::Point<double, 2> const& point = polygon[i];
        // Written so that a NaN fails as well.
        if (!(std::abs(point.x) <= FarthestPixel && std::abs(point.y) <= FarthestPixel)) {
            std::ostringstream text;
            text.exceptions(std::ios::badbit);  // memory that is missing is told
            text << "Cannot fill polygon " << index << ": its point " << i << " (" << point.x << ", " << point.y
                 << ") is not within 4194304 pixels of the origin";
            throw std::invalid_argument(text.str());
        }
        converted.push_back({ToSixteenths(point.x), ToSixteenths(point.y)});
    }
    return converted;
}

/// Throws when a column times a number of rows, as the fill multiplies them, may not fit into 32 bits.
void CheckProducts(std::vector<geometry::Polygon<int>> const& polygons) {
    std::int64_t farthest = 0, lowest = 0, highest = 0;
    bool first = true;
    for (geometry::Polygon<int> const& polygon : polygons) {
        for (geometry::Point<int, 2> const& point : polygon) {
            farthest = std::max<std::int64_t>(farthest, std::abs(point.x));
            lowest = first ? point.y : std::min<std::int64_t>(lowest, point.y);
            highest = first ? point.y : std::max<std::int64_t>(highest, point.y);
            first = false;
        }
    }
    // 16 for the rounding of both ends to rows, 32 for the step past the last row.
    if (farthest * (highest - lowest + 48) <= std::numeric_limits<int>::max()) return;
    std::ostringstream text;
    text.exceptions(std::ios::badbit);
    text << "Cannot fill the polygons: " << (farthest + 15) / 16 << " columns from the origin by "
         << (highest - lowest + 15) / 16
         << " rows do not fit into 32-bit arithmetic; clip them to the mask or fill them in parts";
    throw std::invalid_argument(text.str());
}

}  // namespace

void FillPolygons(BitMask& mask, boost::span<geometry::Polygon<double> const> polygons, unsigned int value) {
    std::vector<geometry::Polygon<int>> converted;
    converted.reserve(polygons.size());
    for (std::size_t i = 0; i < polygons.size(); ++i) converted.push_back(ToSixteenths(polygons[i], i));
    CheckProducts(converted);
    detail::FillPolygonSet(mask, converted, value);
}

}  // namespace qel::algorithm::bit_mask
