// Boost.Polygon's cutting of regions, with the outlines under way in memory that is looked after here.
//
// Boost.Polygon moves an upright line over the corners. For each side that crosses the line it holds an end ("active
// tail") of a trapezoid's outline. Whether a side passes below the next corner of a column is decided by where it is at
// that column, rounded toward zero instead of down: among negative coordinates, a side less than a unit below the
// corner is taken for one above. Outlines get mixed up then. Often that costs a sliver; at times two beginnings are
// joined, which deletes both outlines, and the ends that are left are used later, with null pointers in them. So these
// ends are a class of our own here, for coordinates of our own: it does what Boost.Polygon's does, but notices what is
// gone before it is used. With coordinates that are not negative nothing of that happens.
#include "bit_mask/cut_sides.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qel::algorithm::bit_mask {
namespace {

/// Thrown where Boost.Polygon's own code would use what it has not got.
struct LostTrack {};

void Require(bool condition) {
    if (!condition) throw LostTrack();
}

/// An int of its own type, for which Boost.Polygon's templates are specialised below.
class Coordinate {
public:
    Coordinate() = default;
    Coordinate(int value) : value_(value) {}
    /// A side's height at a column; nothing that fits where the side does not reach the column.
    explicit Coordinate(long double value) {
        Require(value > std::numeric_limits<int>::min() && value < std::numeric_limits<int>::max());
        value_ = static_cast<int>(value);
    }
    operator int() const { return value_; }
    Coordinate operator-() const { return -value_; }
    Coordinate& operator*=(int factor) {
        value_ *= factor;
        return *this;
    }

private:
    int value_ = 0;
};

}  // namespace
}  // namespace qel::algorithm::bit_mask

namespace boost::polygon {

using qel::algorithm::bit_mask::Coordinate;
using qel::algorithm::bit_mask::Require;

template <>
struct geometry_concept<Coordinate> {
    using type = coordinate_concept;
};

template <>
struct coordinate_traits<Coordinate> : coordinate_traits<int> {
    using coordinate_type = Coordinate;
};

/// One end of an outline under way. The names and what they do are Boost.Polygon's.
template <>
class polygon_arbitrary_formation<Coordinate>::active_tail_arbitrary {
public:
    using Pair = std::pair<active_tail_arbitrary*, active_tail_arbitrary*>;
    using Points = std::vector<Point>;

    /// Takes all ends that its thread makes while it lives, and keeps them as long.
    class Store {
    public:
        Store() { current = this; }
        Store(Store const&) = delete;
        Store& operator=(Store const&) = delete;
        ~Store() { current = nullptr; }

        std::deque<Points> points;
        std::deque<active_tail_arbitrary> tails;
        static inline thread_local Store* current = nullptr;
    };

    /// The two ends of a new outline. There are no holes among trapezoids.
    static Pair createActiveTailsAsPair(Point const& point, bool solid, void*, bool) {
        Points& points = Store::current->points.emplace_back();
        points.reserve(8);
        points.push_back(point);
        active_tail_arbitrary& head = Store::current->tails.emplace_back(points, solid);
        active_tail_arbitrary& tail = Store::current->tails.emplace_back(points, !solid);
        head.other_ = &tail;
        tail.other_ = &head;
        return {&head, &tail};
    }

    active_tail_arbitrary(Points& points, bool head) : points_(&points), head_(head) {}

    void pushPoint(Point const& point) {
        Require(!deleted_ && points_ != nullptr);
        if (points_->size() > 1 && (head_ ? points_->front() : points_->back()) == point) return;
        points_->insert(head_ ? points_->begin() : points_->end(), point);
    }

    /// Finishes the outline whose ends a and b are, or makes one of two.
    template <class Output>
    static void joinChains(Point const& point, active_tail_arbitrary* a, active_tail_arbitrary* b, bool,
                           Output& output) {
        Require(a != b && !b->deleted_);
        a->pushPoint(point);
        if (a->other_ == b) {
            b->pushPoint(point);
            output.push_back(*a->points_);
        } else if (a->head_ != b->head_) {
            Require(b->points_ != nullptr);
            a->head_ ? b->Append(*a) : a->Append(*b);
        }
        a->Delete();
        b->Delete();
    }

private:
    /// Makes one outline of two, of which this ends the first and after begins the second.
    void Append(active_tail_arbitrary& after) {
        Points& points = *points_;
        if (points.back() == after.points_->front()) points.pop_back();
        points.insert(points.end(), after.points_->begin(), after.points_->end());
        after.other_->points_ = &points;
        after.other_->other_ = other_;
        other_->other_ = after.other_;
        points_ = after.points_ = nullptr;
    }

    /// Takes the outline along, unless that was joined.
    void Delete() {
        if (points_ != nullptr) other_->points_ = nullptr;
        points_ = nullptr;
        deleted_ = true;
    }

    Points* points_;                          ///< null once the outline is gone
    active_tail_arbitrary* other_ = nullptr;  ///< the outline's other end
    bool head_;                               ///< whether this is the end in front of the first point
    bool deleted_ = false;
};

/// Ends the trapezoid below a corner, at the side that bounds it below, and begins the next.
template <>
inline void trapezoid_arbitrary_formation<Coordinate>::getVerticalPair_(active_tail_arbitrary::Pair& pair,
                                                                        iterator side) {
    Require(side != scanData_.end());
    Point const point(x_, convert_high_precision_type<Coordinate>(side->first.evalAtX(x_)));
    side->second->pushPoint(point);
    auto const [head, tail] = active_tail_arbitrary::createActiveTailsAsPair(point, true, nullptr, false);
    pair = {side->second, head};
    side->second = tail;
}

}  // namespace boost::polygon

namespace qel::algorithm::bit_mask {
namespace {

using Formation = boost::polygon::trapezoid_arbitrary_formation<Coordinate>;
using Tail = boost::polygon::polygon_arbitrary_formation<Coordinate>::active_tail_arbitrary;
using Corner = boost::polygon::point_data<Coordinate>;
using HalfSide = boost::polygon::scanline_base<Coordinate>::vertex_half_edge;

/// Wraps, as the fill does with coordinates too large for 32 bits.
int Move(int coordinate, std::int64_t distance) { return static_cast<int>(coordinate + distance); }

/// Takes outlines as trapezoids whose columns begin at origin; x and y of the outlines are swapped.
class Trapezoids {
public:
    Trapezoids(int origin, std::vector<Trapezoid>& trapezoids) : origin_(origin), trapezoids_(trapezoids) {}

    void push_back(std::vector<Corner> const& outline) {
        // The last corner repeats the first.
        auto const end = outline.end() - 1;
        if (end - outline.begin() < 3) return;
        auto const [lowest, highest] =
            std::minmax_element(outline.begin(), end, [](Corner const& a, Corner const& b) { return a.x() < b.x(); });
        trapezoids_.push_back(
            {lowest->x(), highest->x(), GetSpan(outline, lowest->x()), GetSpan(outline, highest->x())});
    }

private:
    /// The columns of the corners at a height; there is one at least.
    Span GetSpan(std::vector<Corner> const& outline, int height) const {
        Span span{std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
        for (Corner const& corner : outline) {
            if (corner.x() != height) continue;
            span = {std::min<int>(span.left, corner.y()), std::max<int>(span.right, corner.y())};
        }
        return {Move(span.left, origin_), Move(span.right, origin_)};
    }

    int origin_;
    std::vector<Trapezoid>& trapezoids_;
};

/// Cuts with columns counted from origin; false, with nothing appended, where track of the sides is lost.
bool Cut(boost::span<Region::element_type const> sides, int origin, std::vector<Trapezoid>& trapezoids) {
    std::vector<HalfSide> halves;
    halves.reserve(2 * sides.size());
    for (auto const& [ends, count] : sides) {
        Corner const first(ends.first.x(), Move(ends.first.y(), -std::int64_t{origin}));
        Corner const second(ends.second.x(), Move(ends.second.y(), -std::int64_t{origin}));
        halves.emplace_back(first, second, count);
        halves.emplace_back(second, first, -count);
    }
    boost::polygon::polygon_sort(halves.begin(), halves.end());
    std::size_t const before = trapezoids.size();
    Trapezoids output(origin, trapezoids);
    Tail::Store const store;
    try {
        Formation().scan(output, halves.begin(), halves.end());
    } catch (LostTrack const&) {
        trapezoids.resize(before);
        return false;
    }
    return true;
}

}  // namespace

void AppendTrapezoids(boost::span<Region::element_type const> sides, std::vector<Trapezoid>& trapezoids) {
    if (Cut(sides, 0, trapezoids)) return;
    int leftmost = 0;
    for (auto const& [ends, count] : sides) leftmost = std::min({leftmost, ends.first.y(), ends.second.y()});
    if (Cut(sides, leftmost, trapezoids)) return;
    throw std::runtime_error(
        "Cannot fill the polygons: combined, their sides meet between corners; fill them in parts");
}

}  // namespace qel::algorithm::bit_mask
