#pragma once

namespace qel::configuration {

/// The numbers from minimum to maximum, both inclusive.
template <class T>
struct Range {
    T minimum;
    T maximum;
};

template <class T>
Range(T, T) -> Range<T>;

}  // namespace qel::configuration
