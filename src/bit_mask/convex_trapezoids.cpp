// A clearly convex polygon needs no set operation: level lines through its corners cut it, and where a line meets the
// opposite side the column is rounded toward zero, as Boost.Polygon does.
#include "bit_mask/convex_trapezoids.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace qel::algorithm::bit_mask {
namespace {

using geometry::Polygon;
using Point = geometry::Point<int, 2>;

/// Beyond that products of differences do not fit.
constexpr int Farthest = 1 << 26;

/// Twice the signed area of a triangle.
std::int64_t Cross(Point const& a, Point const& b, Point const& c) {
    return (std::int64_t{b.x} - a.x) * (std::int64_t{c.y} - a.y) -
           (std::int64_t{b.y} - a.y) * (std::int64_t{c.x} - a.x);
}

double Distance(Point const& a, Point const& b) {
    return std::hypot(static_cast<double>(b.x) - a.x, static_cast<double>(b.y) - a.y);
}

/// Every corner turns the same way, level lines meet the outline twice, and no corner comes within two units of a side
/// that is not its own: Boost.Polygon bends sides that pass through the unit square of a corner.
bool IsClearlyConvex(std::vector<Point> const& points) {
    std::size_t const count = points.size();
    if (count < 3) return false;
    std::size_t left = 0, right = 0, lowest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Point const &a = points[i], &b = points[(i + 1) % count], &c = points[(i + 2) % count];
        if (std::max(std::abs(std::int64_t{a.x}), std::abs(std::int64_t{a.y})) > Farthest) return false;
        std::int64_t const turn = Cross(a, b, c);
        // The corners next to a side are the nearest to it.
        if (std::abs(static_cast<double>(turn)) <= 2.0 * std::max(Distance(a, b), Distance(b, c))) return false;
        left += turn > 0 ? 1 : 0;
        right += turn < 0 ? 1 : 0;
        lowest += b.y < a.y && b.y <= c.y ? 1 : 0;
    }
    return (left == count || right == count) && lowest == 1;
}

/// One side of the outline, walked upwards from the lowest corner.
class Side {
public:
    Side(std::vector<Point> const& points, std::size_t lowest, std::size_t step)
        : points_(points), at_(lowest), step_(step) {
        // A level bottom belongs to neither side.
        if (Next().y == points_[at_].y) at_ = (at_ + step_) % points_.size();
    }

    /// The column at a row above the bottom and below the top; rows have to come in ascending order.
    int At(int y) {
        while (Next().y <= y) at_ = (at_ + step_) % points_.size();
        Point const &a = points_[at_], &b = Next();
        std::int64_t const height = std::int64_t{b.y} - a.y;
        return static_cast<int>((a.x * height + (std::int64_t{y} - a.y) * (std::int64_t{b.x} - a.x)) / height);
    }

private:
    Point const& Next() const { return points_[(at_ + step_) % points_.size()]; }

    std::vector<Point> const& points_;
    std::size_t at_;
    std::size_t step_;
};

struct Cut {
    int y, left, right;
};

/// The outline at the height of each corner, from below.
std::vector<Cut> GetCuts(std::vector<Point> const& points) {
    std::vector<Cut> cuts;
    cuts.reserve(points.size());
    for (Point const& point : points) cuts.push_back({point.y, point.x, point.x});
    std::sort(cuts.begin(), cuts.end(), [](Cut const& a, Cut const& b) { return a.y < b.y; });
    std::size_t count = 0;
    for (Cut const& cut : cuts) {
        if (count != 0 && cuts[count - 1].y == cut.y) {
            cuts[count - 1].left = std::min(cuts[count - 1].left, cut.left);
            cuts[count - 1].right = std::max(cuts[count - 1].right, cut.right);
        } else {
            cuts[count++] = cut;
        }
    }
    cuts.resize(count);
    auto const lowest = std::min_element(points.begin(), points.end(), [](auto& a, auto& b) { return a.y < b.y; });
    std::size_t const start = static_cast<std::size_t>(lowest - points.begin());
    Side forwards(points, start, 1), backwards(points, start, points.size() - 1);
    for (std::size_t i = 1; i + 1 < count; ++i) {
        int const a = forwards.At(cuts[i].y), b = backwards.At(cuts[i].y);
        cuts[i].left = std::min(a, b);
        cuts[i].right = std::max(a, b);
    }
    return cuts;
}

}  // namespace

bool AppendConvexTrapezoids(Polygon<int> const& polygon, std::vector<Polygon<int>>& trapezoids) {
    std::vector<Point> points(polygon.begin(), polygon.end());
    if (points.size() > 1 && points.front() == points.back()) points.pop_back();
    if (!IsClearlyConvex(points)) return false;
    std::vector<Cut> const cuts = GetCuts(points);
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
        Cut const &a = cuts[i], &b = cuts[i + 1];
        trapezoids.push_back({{a.left, a.y}, {a.right, a.y}, {b.right, b.y}, {b.left, b.y}, {a.left, a.y}});
    }
    return true;
}

}  // namespace qel::algorithm::bit_mask
