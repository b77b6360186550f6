// A level line moves up over the corners of a polygon. At each it cuts the intervals that the corner touches and no
// other; on the side away from the corner the cut is rounded toward zero. That is what Boost.Polygon makes of a polygon
// whose sides it need not bend: it bends those that cross, and those that pass through the unit square of a corner.
#include "bit_mask/simple_trapezoids.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qel::algorithm::bit_mask {
namespace {

using Point = geometry::Point<int, 2>;

/// Beyond that products of differences do not fit.
constexpr int Farthest = 1 << 26;

/// The sides are compared each with each: with more of them the set operation is faster.
constexpr std::size_t MostCorners = 512;

/// How far, in units, sides keep from corners that are not theirs.
constexpr int Distance = 2;

/// Twice the signed area of a triangle: positive where c lies left of the way from a to b.
std::int64_t Cross(Point const& a, Point const& b, Point const& c) {
    return (std::int64_t{b.x} - a.x) * (std::int64_t{c.y} - a.y) -
           (std::int64_t{b.y} - a.y) * (std::int64_t{c.x} - a.x);
}

bool IsLower(Point const& a, Point const& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; }

/// Whether c and d lie on one side of the line through a and b, and not near it.
bool IsBeside(Point const& a, Point const& b, Point const& c, Point const& d) {
    double const first = static_cast<double>(Cross(a, b, c)), second = static_cast<double>(Cross(a, b, d));
    double const near = Distance * std::hypot(static_cast<double>(b.x) - a.x, static_cast<double>(b.y) - a.y);
    return (first > near && second > near) || (first < -near && second < -near);
}

}  // namespace

bool SimpleTrapezoids::IsSimple() const {
    std::size_t const count = corners_.size();
    for (std::size_t i = 0; i < count; ++i) {
        Point const &a = corners_[i], &b = corners_[(i + 1) % count], &c = corners_[(i + 2) % count];
        // Neighbours meet in a clear angle.
        if (!IsBeside(a, b, c, c) || !IsBeside(b, c, a, a)) return false;
        Side const& side = sides_[i];
        int const left = std::min(a.x, b.x) - Distance, right = std::max(a.x, b.x) + Distance;
        std::size_t const last = i == 0 ? count - 1 : count;
        for (std::size_t k = i + 2; k < last; ++k) {
            Side const& other = sides_[k];
            if (other.lower.y > side.upper.y + Distance || other.upper.y < side.lower.y - Distance ||
                std::min(other.lower.x, other.upper.x) > right || std::max(other.lower.x, other.upper.x) < left) {
                continue;
            }
            if (!IsBeside(a, b, other.lower, other.upper) && !IsBeside(other.lower, other.upper, a, b)) return false;
        }
    }
    return true;
}

Span SimpleTrapezoids::At(Interval const& interval, int y) const {
    auto const at = [y](Side const& side) {
        Point const &a = side.lower, &b = side.upper;
        if (y == b.y) return b.x;
        std::int64_t const height = std::int64_t{b.y} - a.y;
        return static_cast<int>((a.x * height + (std::int64_t{y} - a.y) * (std::int64_t{b.x} - a.x)) / height);
    };
    return {at(sides_[interval.left]), at(sides_[interval.right])};
}

bool SimpleTrapezoids::IsInside(Interval const& interval, Point const& point) const {
    Side const &left = sides_[interval.left], &right = sides_[interval.right];
    return Cross(left.lower, left.upper, point) < 0 && Cross(right.lower, right.upper, point) > 0;
}

void SimpleTrapezoids::Cut(Interval& interval, int y, Span const& span, std::vector<Trapezoid>& trapezoids) const {
    if (interval.y != y) trapezoids.push_back({interval.y, y, interval.span, span});
    interval.y = y;
    interval.span = span;
}

/// Two sides go up from a corner: between them lies an interval, or a gap in one.
void SimpleTrapezoids::Begin(Point const& corner, std::size_t left, std::size_t right,
                             std::vector<Trapezoid>& trapezoids) {
    auto const around = std::find_if(intervals_.begin(), intervals_.end(),
                                     [&](Interval const& interval) { return IsInside(interval, corner); });
    if (around == intervals_.end()) {
        intervals_.push_back({left, right, corner.y, {corner.x, corner.x}});
        return;
    }
    Cut(*around, corner.y, At(*around, corner.y), trapezoids);
    Interval const other{right, around->right, corner.y, {corner.x, around->span.right}};
    around->right = left;
    around->span.right = corner.x;
    intervals_.push_back(other);
}

/// Two sides come up to a corner: the end of the interval between them, or of the gap.
void SimpleTrapezoids::End(Point const& corner, std::size_t left, std::size_t right,
                           std::vector<Trapezoid>& trapezoids) {
    auto const from = [&](std::size_t side) {
        return std::find_if(intervals_.begin(), intervals_.end(), [side](auto const& i) { return i.left == side; });
    };
    auto const closing = from(left);
    if (closing != intervals_.end()) {
        Cut(*closing, corner.y, {corner.x, corner.x}, trapezoids);
        *closing = intervals_.back();
        intervals_.pop_back();
        return;
    }
    auto const after = from(right);
    auto const before =
        std::find_if(intervals_.begin(), intervals_.end(), [left](auto const& i) { return i.right == left; });
    Cut(*before, corner.y, {At(*before, corner.y).left, corner.x}, trapezoids);
    Cut(*after, corner.y, {corner.x, At(*after, corner.y).right}, trapezoids);
    before->right = after->right;
    before->span.right = after->span.right;
    *after = intervals_.back();
    intervals_.pop_back();
}

/// One side follows another at a corner.
void SimpleTrapezoids::Continue(Point const& corner, std::size_t below, std::size_t above,
                                std::vector<Trapezoid>& trapezoids) {
    auto const interval = std::find_if(intervals_.begin(), intervals_.end(),
                                       [below](auto const& i) { return i.left == below || i.right == below; });
    Span span = At(*interval, corner.y);
    bool const left = interval->left == below;
    (left ? span.left : span.right) = corner.x;
    Cut(*interval, corner.y, span, trapezoids);
    (left ? interval->left : interval->right) = above;
}

bool SimpleTrapezoids::Append(geometry::Polygon<int> const& polygon, std::vector<Trapezoid>& trapezoids) {
    corners_.assign(polygon.begin(), polygon.end());
    if (corners_.size() > 1 && corners_.front() == corners_.back()) corners_.pop_back();
    std::size_t const count = corners_.size();
    if (count < 3 || count > MostCorners) return false;
    if (std::any_of(corners_.begin(), corners_.end(), [](Point const& p) {
            return std::max(std::abs(std::int64_t{p.x}), std::abs(std::int64_t{p.y})) > Farthest;
        })) {
        return false;
    }
    sides_.clear();
    for (std::size_t i = 0; i < count; ++i) {
        Point const &a = corners_[i], &b = corners_[(i + 1) % count];
        sides_.push_back(IsLower(a, b) ? Side{a, b} : Side{b, a});
    }
    if (!IsSimple()) return false;
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::sort(order_.begin(), order_.end(),
              [this](std::size_t a, std::size_t b) { return IsLower(corners_[a], corners_[b]); });
    for (std::size_t const i : order_) {
        Point const& corner = corners_[i];
        std::size_t const previous = i == 0 ? count - 1 : i - 1;
        Point const &before = corners_[previous], &after = corners_[i + 1 == count ? 0 : i + 1];
        bool const previousUp = IsLower(corner, before), nextUp = IsLower(corner, after);
        bool const nextLeft = Cross(corner, before, after) > 0;
        if (previousUp && nextUp) {
            nextLeft ? Begin(corner, i, previous, trapezoids) : Begin(corner, previous, i, trapezoids);
        } else if (!previousUp && !nextUp) {
            nextLeft ? End(corner, previous, i, trapezoids) : End(corner, i, previous, trapezoids);
        } else {
            previousUp ? Continue(corner, i, previous, trapezoids) : Continue(corner, previous, i, trapezoids);
        }
    }
    return true;
}

}  // namespace qel::algorithm::bit_mask
