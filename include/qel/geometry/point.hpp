#pragma once

#include <cstddef>

namespace qel::geometry {

/// A point of N coordinates; only the plane (N = 2) is defined.
template <class T, std::size_t N>
struct Point;

/// A point of the plane: x is the column, y the row.
template <class T>
struct Point<T, 2> {
    T x{};
    T y{};

    friend constexpr bool operator==(Point const&, Point const&) = default;
};

}  // namespace qel::geometry
