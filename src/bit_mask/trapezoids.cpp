// The region of a polygon set, by Boost.Polygon: an exclusive or of one polygon after the other, cut by level lines.
#include "bit_mask/trapezoids.hpp"

#include <boost/polygon/polygon.hpp>

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
struct point_mutable_traits<qel::geometry::Point<int, 2>> {
    using coordinate_type = int;

    static void set(qel::geometry::Point<int, 2>& point, orientation_2d axis, int value) {
        (axis == HORIZONTAL ? point.x : point.y) = value;
    }
    static qel::geometry::Point<int, 2> construct(int x, int y) { return {x, y}; }
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

template <>
struct polygon_mutable_traits<qel::geometry::Polygon<int>> {
    template <class Iterator>
    static qel::geometry::Polygon<int>& set_points(qel::geometry::Polygon<int>& polygon, Iterator first,
                                                   Iterator last) {
        polygon = {};
        for (; first != last; ++first) polygon.push_back({x(*first), y(*first)});
        // Not every producer repeats the first point at the end; whoever reads these polygons counts on it.
        if (polygon.size() > 1 && polygon[0] != polygon[polygon.size() - 1]) polygon.push_back(polygon[0]);
        return polygon;
    }
};

}  // namespace boost::polygon

namespace qel::algorithm::bit_mask {

std::vector<geometry::Polygon<int>> GetTrapezoids(boost::span<geometry::Polygon<int> const> polygons) {
    using namespace boost::polygon::operators;
    boost::polygon::polygon_set_data<int> region;
    for (geometry::Polygon<int> const& polygon : polygons) region ^= polygon;
    std::vector<geometry::Polygon<int>> trapezoids;
    region.get_trapezoids(trapezoids, boost::polygon::HORIZONTAL);
    return trapezoids;
}

}  // namespace qel::algorithm::bit_mask
