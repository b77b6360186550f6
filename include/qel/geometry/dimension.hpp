#pragma once

#include <cstddef>
#include <iosfwd>

#include "qel/algorithm/export.hpp"

namespace qel::geometry {

/// An extent along N axes; only the plane (N = 2) is defined.
template <class T, std::size_t N>
struct Dimension;

/// An extent of the plane: width in columns, height in rows.
template <class T>
struct Dimension<T, 2> {
    T width{};
    T height{};

    friend constexpr bool operator==(Dimension const&, Dimension const&) = default;
};

/// Writes {"width":W,"height":H} without blanks, numbers as the stream formats unsigned integers.
QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream& stream, Dimension<unsigned int, 2> const& dimension);

}  // namespace qel::geometry
