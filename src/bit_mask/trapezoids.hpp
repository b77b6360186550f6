#pragma once

#include <vector>

#include <boost/core/span.hpp>

#include "qel/geometry/polygon.hpp"

namespace qel::algorithm::bit_mask {

/// Cuts the area that an odd number of the polygons cover into trapezoids with level tops and bottoms (or triangles).
/// Each is closed: its first point is repeated at its end.
std::vector<geometry::Polygon<int>> GetTrapezoids(boost::span<geometry::Polygon<int> const> polygons);

}  // namespace qel::algorithm::bit_mask
