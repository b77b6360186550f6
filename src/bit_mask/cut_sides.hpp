#pragma once

#include <vector>

#include <boost/core/span.hpp>
#include <boost/polygon/polygon.hpp>

#include "bit_mask/trapezoids.hpp"

namespace qel::algorithm::bit_mask {

/// The area between sides of Boost.Polygon, which meet at their ends only.
using Region = boost::polygon::polygon_set_data<int>;

/// Appends the trapezoids that Boost.Polygon cuts between the sides of a clean region whose x and y are swapped: its
/// own cuts are upright. Where its code would follow a lost pointer, which only negative columns lead to, those that it
/// cuts with columns counted from the leftmost one: cuts are rounded down there instead of toward zero. Throws
/// std::runtime_error, with nothing appended, for some sides that meet between corners.
void AppendTrapezoids(boost::span<Region::element_type const> sides, std::vector<Trapezoid>& trapezoids);

}  // namespace qel::algorithm::bit_mask
