#pragma once

#include <concepts>
#include <cstdint>
#include <string>

namespace qel::object {

/// The types of values that objects and configuration nodes hold; there are no others.
template <class T>
concept PrimitiveValue = std::same_as<T, std::string> || std::same_as<T, bool> || std::same_as<T, unsigned char> ||
    std::same_as<T, std::int32_t> || std::same_as<T, std::int64_t> || std::same_as<T, std::uint32_t> ||
    std::same_as<T, double>;

/// Those of them that are numbers, which have a range.
template <class T>
concept Number = PrimitiveValue<T> && !std::same_as<T, std::string> && !std::same_as<T, bool>;

}  // namespace qel::object
