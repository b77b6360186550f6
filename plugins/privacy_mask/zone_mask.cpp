// Each zone by itself, so that overlapping ones add up: its inside with the polygon fill, then its outline.
//
// The fill works in sixteenths of a pixel and leaves out what is thinner than a row, but gets every pixel right that
// lies wholly inside or outside and is further than the margin from the outline. The outline covers all the others: a
// polygon that does not cross itself keeps its inside when its corners move by less than that.
#include "zone_mask.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "qel/algorithm/bit_mask/fill_polygon.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;
using Point = geometry::Point<double, 2>;
using Polygon = geometry::Polygon<double>;

/// The part of a polygon on one side of an axis-parallel line: where (coordinate - bound) * sign >= 0. Parts that are
/// left apart stay joined along the line.
Polygon CutAt(Polygon const& polygon, double Point::*coordinate, double bound, double sign) {
    Polygon cut;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        Point const& from = polygon[i];
        Point const& to = polygon[(i + 1) % polygon.size()];
        double const fromInside = (from.*coordinate - bound) * sign, toInside = (to.*coordinate - bound) * sign;
        if (fromInside >= 0) cut.push_back(from);
        if ((fromInside > 0 && toInside < 0) || (fromInside < 0 && toInside > 0)) {
            double const share = fromInside / (fromInside - toInside);
            Point crossing{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
            crossing.*coordinate = bound;
            cut.push_back(crossing);
        }
    }
    return cut;
}

/// Sets the inside, as far as the fill takes it for that. The fill draws no trapezoid that touches but one row of the
/// mask, so there must be a row to spare above and below: mask is two rows higher than the frame.
void FillInside(BitMask& mask, Polygon polygon) {
    constexpr double Spare = 2;
    auto const width = static_cast<double>(mask.GetSize().width), height = static_cast<double>(mask.GetSize().height);
    for (Point& corner : polygon) corner.y += 1;
    polygon = CutAt(CutAt(polygon, &Point::x, -Spare, 1), &Point::x, width + Spare, -1);
    // As many rows at a time as the fill's arithmetic holds.
    double const rows = std::max(8.0, std::floor(8e6 / (width + 2 * Spare)) - 16);
    for (double y = 0; y < height; y += rows) {
        Polygon const band =
            CutAt(CutAt(polygon, &Point::y, y - Spare, 1), &Point::y, std::min(y + rows, height) + Spare, -1);
        if (band.size() > 2) algorithm::bit_mask::FillPolygons(mask, {&band, 1}, 1);
    }
}

/// Sets every pixel whose square, made larger by the margin, is touched by the side between two points.
void DrawSide(BitMask& mask, Point from, Point to) {
    constexpr double Reach = 0.5 + ZoneMask::Margin;
    if (from.y > to.y) std::swap(from, to);
    auto const width = static_cast<double>(mask.GetSize().width), height = static_cast<double>(mask.GetSize().height);
    double const firstRow = std::max(std::ceil(from.y - Reach), 0.0);
    double const lastRow = std::min(std::floor(to.y + Reach), height - 1);
    for (double row = firstRow; row <= lastRow; ++row) {
        double const slope = to.y > from.y ? (to.x - from.x) / (to.y - from.y) : 0;
        double const top = std::max(from.y, row - Reach), bottom = std::min(to.y, row + Reach);
        double const atTop = top > from.y ? from.x + (top - from.y) * slope : from.x;
        double const atBottom = bottom < to.y ? from.x + (bottom - from.y) * slope : to.x;
        auto const [left, right] = std::minmax(atTop, atBottom);
        double const first = std::max(std::ceil(left - Reach), 0.0);
        double const last = std::min(std::floor(right + Reach), width - 1);
        if (first > last) continue;
        algorithm::bit_mask::FillScanLine(mask.GetData().data() + static_cast<std::size_t>(row) * mask.GetStride(),
                                          static_cast<unsigned int>(first), static_cast<unsigned int>(last), 1);
    }
}

}  // namespace

bool ZoneMask::Update(std::shared_ptr<Zones const> const& zones, BitMask::Size size) {
    if (zones == zones_ && size == mask_.GetSize()) return false;
    BitMask mask(size);
    if (!mask.GetData().empty() && zones != nullptr && !zones->empty()) {
        BitMask inside({size.width, size.height + 2});
        for (Zone const& zone : *zones) {
            Polygon const corners = zone.ToPixels(size);
            FillInside(inside, corners);
            for (std::size_t i = 0; i < corners.size(); ++i) {
                DrawSide(mask, corners[i], corners[(i + 1) % corners.size()]);
            }
        }
        std::size_t const stride = mask.GetStride();
        for (std::size_t i = 0; i < mask.GetData().size(); ++i) mask.GetData()[i] |= inside.GetData()[i + stride];
    }
    mask_ = std::move(mask);
    zones_ = zones;
    return true;
}

}  // namespace qel::privacy_mask
