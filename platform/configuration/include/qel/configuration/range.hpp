#pragma once

#include <type_traits>

namespace qel::configuration {

/// The numbers from minimum to maximum, both inclusive.
template <class T>
struct Range {
    static_assert(std::is_arithmetic_v<T>);

    T minimum;
    T maximum;
};

template <class T>
Range(T, T) -> Range<T>;  ///< Range{1, 10} is one of int

}  // namespace qel::configuration
