#pragma once

namespace qel::type {

/// The dotted type name of T: each named type specialises this with
/// `static constexpr char const* Value = "qel.some.Type";`.
template <class T>
struct Name;

}  // namespace qel::type
