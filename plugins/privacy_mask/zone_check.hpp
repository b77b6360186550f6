#pragma once

#include <cstddef>
#include <optional>
#include <utility>

#include "qel/geometry/polygon.hpp"

namespace qel::privacy_mask {

/// Two sides of a polygon that share a point, other than neighbours their corner; nothing when there are none.
/// Side i goes from corner i to the next. Exact where products of two differences of coordinates are. Requires at least
/// three corners, neighbours different.
std::optional<std::pair<std::size_t, std::size_t>> FindMeeting(geometry::Polygon<double> const& polygon);

}  // namespace qel::privacy_mask
