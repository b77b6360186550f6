#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bit_mask/trapezoids.hpp"
#include "qel/geometry/polygon.hpp"

namespace qel::algorithm::bit_mask {

/// Cuts polygons that a set operation would leave as they are. Keeps its buffers from polygon to polygon.
class SimpleTrapezoids {
public:
    /// Appends the trapezoids of a polygon whose sides meet at its corners only and are nowhere near each other
    /// elsewhere, as GetTrapezoids gives them; false, with nothing appended, for any other.
    bool Append(geometry::Polygon<int> const& polygon, std::vector<Trapezoid>& trapezoids);

private:
    using Point = geometry::Point<int, 2>;

    /// A side; of two ends at one height the left one is the lower.
    struct Side {
        Point lower, upper;
    };

    /// What a level line has inside the polygon between two of its sides, since a height.
    struct Interval {
        std::size_t left, right;  ///< sides, by the number of their first corner
        int y;
        Span span;  ///< at that height
    };

    bool IsSimple() const;
    /// Ends the trapezoid of an interval at a height, and begins the next one there.
    void Cut(Interval& interval, int y, Span const& span, std::vector<Trapezoid>& trapezoids) const;
    /// The columns between the interval's sides at a height.
    Span At(Interval const& interval, int y) const;
    bool IsInside(Interval const& interval, Point const& point) const;

    void Begin(Point const& corner, std::size_t left, std::size_t right, std::vector<Trapezoid>& trapezoids);
    void End(Point const& corner, std::size_t left, std::size_t right, std::vector<Trapezoid>& trapezoids);
    void Continue(Point const& corner, std::size_t below, std::size_t above, std::vector<Trapezoid>& trapezoids);

    std::vector<Point> corners_;
    std::vector<Side> sides_;
    std::vector<std::size_t> order_;
    std::vector<Interval> intervals_;
};

}  // namespace qel::algorithm::bit_mask
