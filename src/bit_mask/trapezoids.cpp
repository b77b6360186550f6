// The region of a polygon set, by Boost.Polygon: an exclusive or of one polygon after the other, cut by level lines.
// Polygons whose bounding boxes keep a distance cannot meet and are combined and cut by themselves; a simple one that
// stands alone needs no combining.
#include "bit_mask/trapezoids.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>

#include <boost/polygon/polygon.hpp>

#include "bit_mask/cut_sides.hpp"
#include "bit_mask/simple_trapezoids.hpp"

namespace boost::polygon {

template <>
struct geometry_concept<qel::geometry::Point<int, 2>> {
    using type = point_concept;
};

template <>
struct point_traits<qel::geometry::Point<int, 2>> {
    using coordinate_type = int;

    static int get(qel::geometry::Point<int, 2> const& point, orientation_2d axis) {
        return axis == HORIZONTAL ? point.x : point.y;
    }
};

template <>
struct geometry_concept<qel::geometry::Polygon<int>> {
    using type = polygon_concept;
};

template <>
struct polygon_traits<qel::geometry::Polygon<int>> {
    using coordinate_type = int;
    using point_type = qel::geometry::Point<int, 2>;
    using iterator_type = qel::geometry::Polygon<int>::const_iterator;

    static iterator_type begin_points(qel::geometry::Polygon<int> const& polygon) { return polygon.begin(); }
    static iterator_type end_points(qel::geometry::Polygon<int> const& polygon) { return polygon.end(); }
    static std::size_t size(qel::geometry::Polygon<int> const& polygon) { return polygon.size(); }
    static winding_direction winding(qel::geometry::Polygon<int> const&) { return unknown_winding; }
};

}  // namespace boost::polygon

namespace qel::algorithm::bit_mask {
namespace {

using geometry::Polygon;

/// A polygon's bounding box, corners included.
struct Box {
    int left, bottom, right, top;
    std::size_t polygon;
};

/// The boxes of the polygons that have points, lowest first.
std::vector<Box> GetBoxes(boost::span<Polygon<int> const> polygons) {
    std::vector<Box> boxes;
    boxes.reserve(polygons.size());
    for (std::size_t i = 0; i < polygons.size(); ++i) {
        if (polygons[i].empty()) continue;
        Box box{polygons[i][0].x, polygons[i][0].y, polygons[i][0].x, polygons[i][0].y, i};
        for (geometry::Point<int, 2> const& point : polygons[i]) {
            box.left = std::min(box.left, point.x);
            box.right = std::max(box.right, point.x);
            box.bottom = std::min(box.bottom, point.y);
            box.top = std::max(box.top, point.y);
        }
        boxes.push_back(box);
    }
    std::sort(boxes.begin(), boxes.end(), [](Box const& a, Box const& b) { return a.bottom < b.bottom; });
    return boxes;
}

/// Whether an interval begins less than a pixel behind another's end: rounding moves crossings by a unit or two, and a
/// side only through corners that it passes as close.
bool AreNear(std::int64_t begin, std::int64_t end) { return begin <= end + 16; }

/// For each polygon the least number among those that its surroundings connect it with, over others as well.
std::vector<std::size_t> GetGroups(boost::span<Polygon<int> const> polygons) {
    std::vector<std::size_t> groups(polygons.size());
    std::iota(groups.begin(), groups.end(), std::size_t{0});
    auto const find = [&groups](std::size_t i) {
        while (groups[i] != i) i = groups[i] = groups[groups[i]];
        return i;
    };
    std::vector<Box> const boxes = GetBoxes(polygons);
    for (auto box = boxes.begin(); box != boxes.end(); ++box) {
        for (auto other = box + 1; other != boxes.end() && AreNear(other->bottom, box->top); ++other) {
            if (!AreNear(other->left, box->right) || !AreNear(box->left, other->right)) continue;
            std::size_t const a = find(box->polygon), b = find(other->polygon);
            groups[std::max(a, b)] = std::min(a, b);
        }
    }
    for (std::size_t i = 0; i < groups.size(); ++i) groups[i] = find(i);
    return groups;
}

/// Goes through as many combinations as polygons from elsewhere would have meant. Each rounds the region's own
/// crossings anew, which can move them once more, until one changes nothing.
void Settle(Region& region, std::size_t rounds) {
    using namespace boost::polygon::operators;
    for (; rounds != 0; --rounds) {
        std::vector<Region::element_type> const before(region.begin(), region.end());
        region ^= Polygon<int>();
        if (std::equal(before.begin(), before.end(), region.begin(), region.end())) return;
    }
}

/// The exclusive or of the polygons with the given numbers, as if combined in order with all others around.
Region Combine(boost::span<Polygon<int> const> polygons, boost::span<std::size_t const> numbers) {
    using namespace boost::polygon::operators;
    Region region;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        region ^= polygons[numbers[i]];
        std::size_t const next = i + 1 < numbers.size() ? numbers[i + 1] : polygons.size();
        Settle(region, next - numbers[i] - 1);
    }
    return region;
}

/// The region with x and y swapped, cleaned before and after, as Boost.Polygon does before it cuts along level lines.
Region Swap(Region const& region) {
    region.clean();
    Region swapped;
    for (auto const& [ends, count] : region) {
        auto const& [a, b] = ends;
        // A mirror image turns the other way round. Upright sides count the other way as well: they are level now.
        bool const straight = a.x() == b.x() || a.y() == b.y();
        swapped.insert(Region::element_type({{a.y(), a.x()}, {b.y(), b.x()}}, straight ? count : -count));
    }
    swapped.clean();
    return swapped;
}

}  // namespace

std::vector<Trapezoid> GetTrapezoids(boost::span<Polygon<int> const> polygons) {
    // Combining costs as much as everything combined so far: polygons that stand apart are left apart.
    std::vector<std::size_t> const groups = GetGroups(polygons);
    std::vector<std::size_t> order(polygons.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return groups[a] < groups[b]; });
    std::vector<Trapezoid> trapezoids;
    SimpleTrapezoids simple;
    for (std::size_t first = 0, end = 0; first < order.size(); first = end) {
        while (end < order.size() && groups[order[end]] == groups[order[first]]) ++end;
        if (end - first == 1 && simple.Append(polygons[order[first]], trapezoids)) continue;
        Region const region = Swap(Combine(polygons, {order.data() + first, end - first}));
        AppendTrapezoids(region.value(), trapezoids);
    }
    return trapezoids;
}

}  // namespace qel::algorithm::bit_mask
