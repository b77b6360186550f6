#pragma once

#include <boost/core/span.hpp>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/export.hpp"
#include "qel/geometry/polygon.hpp"

namespace qel::algorithm::bit_mask {

/// Sets (value != 0) or clears the area that an odd number of the polygons cover; where an even number overlap is a
/// hole. Corners are in pixels, pixel (0, 0) having its centre at 0, 0, and are rounded to sixteenths of one.
/// Row and column ends are inclusive: an outline that runs through pixels paints them, around holes as well.
/// Throws std::invalid_argument, with nothing drawn, for a corner that is no number or not within +-2^22 pixels, and
/// for polygons too large together for 32-bit arithmetic: farthest column times rows spanned above some 8,000,000.
QEL_ALGORITHM_EXPORT void FillPolygons(BitMask& mask, boost::span<geometry::Polygon<double> const> polygons,
                                       unsigned int value);

namespace detail {

/// The same with corners in sixteenths of a pixel. Self-crossing polygons are what Boost.Polygon makes of them.
/// Requires products of a column and a number of rows, both in sixteenths, within 32 bits; beyond that some pixels of
/// the mask are drawn wrongly. Throws std::runtime_error, with nothing drawn, should Boost.Polygon combine them to
/// sides that meet between corners (never seen), and std::bad_alloc, with the mask possibly half drawn.
QEL_ALGORITHM_EXPORT void FillPolygonSet(BitMask& mask, boost::span<geometry::Polygon<int> const> polygons,
                                         unsigned int value);

}  // namespace detail

}  // namespace qel::algorithm::bit_mask
