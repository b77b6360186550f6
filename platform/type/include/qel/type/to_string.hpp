#pragma once

#include <cstdint>
#include <string>

#include "qel/type/strings.hpp"

namespace qel::type {

/// The text of an enumerator, from Strings<E>; throws std::invalid_argument for a value without a text.
template <class E>
std::string ToString(E value) {
    return detail::FindString(Strings<E>::GetMap(), static_cast<std::uint64_t>(value));
}

}  // namespace qel::type
