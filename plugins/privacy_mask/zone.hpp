#pragma once

#include <string_view>
#include <vector>

#include "qel/geometry/dimension.hpp"
#include "qel/geometry/polygon.hpp"

namespace qel::privacy_mask {

/// A part of the picture that is to be hidden: a polygon that neither crosses nor touches itself.
struct Zone {
    enum class Unit {
        Pixels,   ///< pixel (0, 0) has its centre at 0, 0
        Percent,  ///< of the frame: 0 is its left or upper border, 100 its right or lower one
    };

    Unit unit = Unit::Pixels;
    /// At least three.
    geometry::Polygon<double> corners;

    /// The corners in pixels of a frame of that size.
    geometry::Polygon<double> ToPixels(geometry::Dimension<unsigned int, 2> size) const;
};

using Zones = std::vector<Zone>;

/// Reads zones: "100,80 300,80 300,280 100,280; 10%,10% 25%,10% 25%,50%".
///
/// Zones are separated by semicolons, corners by blanks, in their order round the zone; the numbers of a zone are
/// pixels, or each with a percent sign. What is empty between semicolons is no zone. Corners are rounded to sixteenths
/// of a pixel and 65536ths of a percent; equal neighbours count once. Throws std::invalid_argument, which says where
/// and why, for anything else, for a zone that crosses or touches itself, and for more than 256 zones, or 256 corners
/// of one.
Zones ParseZones(std::string_view text);

}  // namespace qel::privacy_mask
