#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "qel/type/export.hpp"

namespace qel::type {

/// An enumerator's value mapped to its text, in the order of the values.
using StringMap = std::map<std::uint64_t, std::string>;

/// The texts of the enumeration E: each enumeration with texts specialises this with
/// `static StringMap const& GetMap();`, a table built once, on the first call, and never changed.
template <class E>
struct Strings;

namespace detail {

/// The text of a value; throws std::invalid_argument when the table lacks it.
QEL_TYPE_EXPORT std::string const& FindString(StringMap const& strings, std::uint64_t value);

}  // namespace detail
}  // namespace qel::type
