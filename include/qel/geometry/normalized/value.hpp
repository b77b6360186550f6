#pragma once

namespace qel::geometry::normalized {

/// A coordinate as a share of the image's extent: 0 is the first edge; for unsigned short, 65536 would be the other.
template <class T>
struct Value {
    T value{};

    friend constexpr bool operator==(Value const&, Value const&) = default;
};

}  // namespace qel::geometry::normalized
