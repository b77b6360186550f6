// Each side against each other one: zones have few corners.
#include "zone_check.hpp"

#include <algorithm>

namespace qel::privacy_mask {
namespace {

using Point = geometry::Point<double, 2>;

struct Side {
    Point from, to;
};

/// Where a point lies of the line through a and b: 1 on one side, -1 on the other, 0 on it.
int Turn(Point const& a, Point const& b, Point const& point) {
    double const left = (b.x - a.x) * (point.y - a.y), right = (b.y - a.y) * (point.x - a.x);
    return left > right ? 1 : left < right ? -1 : 0;
}

bool InBox(Side const& side, Point const& point) {
    auto const [x0, x1] = std::minmax(side.from.x, side.to.x);
    auto const [y0, y1] = std::minmax(side.from.y, side.to.y);
    return x0 <= point.x && point.x <= x1 && y0 <= point.y && point.y <= y1;
}

bool Meet(Side const& a, Side const& b) {
    int const a0 = Turn(b.from, b.to, a.from), a1 = Turn(b.from, b.to, a.to);
    int const b0 = Turn(a.from, a.to, b.from), b1 = Turn(a.from, a.to, b.to);
    if (a0 * a1 < 0 && b0 * b1 < 0) return true;
    return (a0 == 0 && InBox(b, a.from)) || (a1 == 0 && InBox(b, a.to)) || (b0 == 0 && InBox(a, b.from)) ||
           (b1 == 0 && InBox(a, b.to));
}

/// Whether a side and the next one lie on each other: the outline turns back.
bool TurnsBack(Side const& side, Side const& next) {
    if (Turn(side.from, side.to, next.to) != 0) return false;
    return (side.from.x - side.to.x) * (next.to.x - side.to.x) + (side.from.y - side.to.y) * (next.to.y - side.to.y) >
           0;
}

}  // namespace

std::optional<std::pair<std::size_t, std::size_t>> FindMeeting(geometry::Polygon<double> const& polygon) {
    std::size_t const count = polygon.size();
    auto const sideAt = [&](std::size_t i) { return Side{polygon[i], polygon[(i + 1) % count]}; };
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = i + 1; j < count; ++j) {
            bool const follows = j == i + 1, precedes = i == 0 && j == count - 1;
            bool const meet = follows    ? TurnsBack(sideAt(i), sideAt(j))
                              : precedes ? TurnsBack(sideAt(j), sideAt(i))
                                         : Meet(sideAt(i), sideAt(j));
            if (meet) return std::pair{i, j};
        }
    }
    return std::nullopt;
}

}  // namespace qel::privacy_mask
