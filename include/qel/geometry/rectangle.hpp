#pragma once

namespace qel::geometry {

/// Two corners: column and row of the first, then of the second.
/// Whether a corner is inclusive or exclusive is each operation's own rule, and each one states it.
template <class T>
struct Rectangle {
    T x0{};
    T y0{};
    T x1{};
    T y1{};

    friend constexpr bool operator==(Rectangle const&, Rectangle const&) = default;
};

}  // namespace qel::geometry
