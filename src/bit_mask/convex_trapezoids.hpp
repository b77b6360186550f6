#pragma once

#include <vector>

#include "qel/geometry/polygon.hpp"

namespace qel::algorithm::bit_mask {

/// Appends the trapezoids of a polygon that is convex and nowhere thin, closed, as GetTrapezoids gives them; false,
/// with nothing appended, for any other.
bool AppendConvexTrapezoids(geometry::Polygon<int> const& polygon, std::vector<geometry::Polygon<int>>& trapezoids);

}  // namespace qel::algorithm::bit_mask
