#pragma once

#include <vector>

#include <boost/core/span.hpp>

#include "qel/geometry/polygon.hpp"

namespace qel::algorithm::bit_mask {

/// The least and the greatest column of a level line.
struct Span {
    int left;
    int right;

    friend bool operator==(Span const&, Span const&) = default;
};

/// An area between two level lines and two straight sides; one of the lines may be a point.
struct Trapezoid {
    int start, end;    ///< y of the bottom and the top: the least and the greatest
    Span bottom, top;  ///< the columns there

    friend bool operator==(Trapezoid const&, Trapezoid const&) = default;
};

/// Cuts the area that an odd number of the polygons cover into trapezoids, in any order.
std::vector<Trapezoid> GetTrapezoids(boost::span<geometry::Polygon<int> const> polygons);

}  // namespace qel::algorithm::bit_mask
