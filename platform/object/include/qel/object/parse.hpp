#pragma once

#include <cstdint>
#include <string>

#include "qel/object/export.hpp"
#include "qel/object/primitive_value.hpp"

namespace qel::object {

/// The value that a text stands for. Throws std::invalid_argument, with the text, when it is none or a number that no
/// type of ours can hold (past 64 bits, past a double), and std::out_of_range for a whole number that T cannot hold.
///
/// unsigned char: an unsigned decimal number, read as std::stoull reads it: leading white space and a sign are accepted
/// ("-1" is the largest 64-bit number, and so out of range), what follows the number is ignored.
/// The other numbers: the whole text must be one decimal number (a leading '+' is accepted), whatever the locale; a
/// double must be finite. bool: "true", "false", "1" or "0". std::string: the text itself.
template <PrimitiveValue T>
T Parse(std::string const& text);

template <>
QEL_OBJECT_EXPORT std::string Parse<std::string>(std::string const& text);
template <>
QEL_OBJECT_EXPORT bool Parse<bool>(std::string const& text);
template <>
QEL_OBJECT_EXPORT unsigned char Parse<unsigned char>(std::string const& text);
template <>
QEL_OBJECT_EXPORT std::int32_t Parse<std::int32_t>(std::string const& text);
template <>
QEL_OBJECT_EXPORT std::int64_t Parse<std::int64_t>(std::string const& text);
template <>
QEL_OBJECT_EXPORT std::uint32_t Parse<std::uint32_t>(std::string const& text);
template <>
QEL_OBJECT_EXPORT double Parse<double>(std::string const& text);

/// Throws the std::out_of_range of a number, given in decimal, that the integer type from minimum to maximum cannot
/// hold: "The parsed value 'NUMBER' was out of range of the integer type: MINIMUM to MAXIMUM".
[[noreturn]] QEL_OBJECT_EXPORT void ThrowOutOfIntegerRange(std::string const& number, std::int64_t minimum,
                                                           std::int64_t maximum);

}  // namespace qel::object
