// Draws a region row by row from trapezoids with level tops and bottoms.
//
// Coordinates are sixteenths of a pixel; pixel row r has its centre at 16 r. A trapezoid covers the rows from its
// bottom to its top, both rounded to a row and both included, so neighbours draw the row they share twice; one that
// rounds to a single row is not drawn. Its sides run between the rounded rows (kept), clipped to the mask's rows.
#include "qel/algorithm/bit_mask/fill_polygon.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "bit_mask/trapezoids.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

namespace qel::algorithm::bit_mask::detail {
namespace {

// Signed 32-bit arithmetic that wraps: coordinates too large for it draw other pixels of the mask, and do no harm.
int Add(int a, int b) { return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b)); }
int Subtract(int a, int b) { return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b)); }
int Multiply(int a, int b) { return static_cast<int>(static_cast<unsigned int>(a) * static_cast<unsigned int>(b)); }

/// The centre of the nearest pixel row, halves upwards.
int RoundToRow(int y) { return Add(y, 8) & ~15; }

/// The point between a and b, weighed by their distances to it, truncated toward zero.
int Between(int a, int weightA, int b, int weightB, int distance) {
    return Add(Multiply(a, weightA), Multiply(b, weightB)) / distance;
}

Span Between(Span const& a, int weightA, Span const& b, int weightB, int distance) {
    return {Between(a.left, weightA, b.left, weightB, distance), Between(a.right, weightA, b.right, weightB, distance)};
}

/// Rounds to rows and clips to rows 0 to height - 1; false when no two rows are left.
bool Clip(Trapezoid& t, int height) {
    if (t.end < 0 || t.start >> 4 >= height) return false;
    t.start = RoundToRow(t.start);
    t.end = RoundToRow(t.end);
    int distance = Subtract(t.end, t.start);
    if (distance <= 0) return false;
    if (t.start < 0) {
        t.bottom = Between(t.bottom, t.end, t.top, Subtract(0, t.start), distance);
        t.start = 0;
        distance = t.end;
        if (distance <= 0) return false;
    }
    if (t.end >= 16 * height) {
        int const last = 16 * (height - 1);
        int const rest = Subtract(last, t.start);
        if (rest < 1) return false;
        t.top = Between(t.bottom, Subtract(t.end, last), t.top, rest, distance);
        t.end = last;
    }
    return true;
}

void Draw(BitMask& mask, Trapezoid const& t, unsigned int value) {
    int const width = static_cast<int>(mask.GetSize().width);
    int const distance = t.end - t.start;
    int left = Multiply(t.bottom.left, distance), right = Multiply(t.bottom.right, distance);
    int const leftStep = Multiply(Subtract(t.top.left, t.bottom.left), 16);
    int const rightStep = Multiply(Subtract(t.top.right, t.bottom.right), 16);
    std::size_t const stride = mask.GetStride();
    std::uint32_t* row = mask.GetData().data() + static_cast<unsigned int>(t.start / 16) * stride;
    for (int y = t.start; y <= t.end; y += 16, row += stride) {
        int const first = Add(left / distance, 8) >> 4;
        int const end = Add(right / distance, 8);
        if (first < width && end >= 0 && first <= end >> 4) {
            FillScanLine(row, static_cast<unsigned int>(std::max(first, 0)),
                         static_cast<unsigned int>(std::min(end >> 4, width - 1)), value);
        }
        left = Add(left, leftStep);
        right = Add(right, rightStep);
    }
}

}  // namespace

void FillPolygonSet(BitMask& mask, boost::span<geometry::Polygon<int> const> polygons, unsigned int value) {
    if (mask.GetData().empty() || mask.GetStride() == 0) return;
    // No more rows than the store holds, nor than their positions in sixteenths can be told apart.
    std::size_t const rows = std::min<std::size_t>(mask.GetSize().height, mask.GetData().size() / mask.GetStride());
    int const height = static_cast<int>(std::min<std::size_t>(rows, 1U << 26));
    for (Trapezoid& trapezoid : GetTrapezoids(polygons)) {
        if (Clip(trapezoid, height)) Draw(mask, trapezoid, value);
    }
}

}  // namespace qel::algorithm::bit_mask::detail
