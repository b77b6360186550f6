#pragma once

#include <cstddef>
#include <string_view>

#include "qel/serialize/export.hpp"

namespace qel::serialize {

/// How deep lists and objects may stand in one another unless a caller says otherwise.
inline constexpr std::size_t MaximumDepth = 64;

/// Throws JsonError unless the text is one JSON document that the archives' reader takes without harm: well-formed
/// UTF-8, an object or a list at the top, nested at most maximumDepth deep (the reader calls itself for each level),
/// without the character U+0000 in a text (the reader would cut the text off there), without numbers that no double
/// holds, and without a nought of more than 44 decimals or with a power of ten past 22 (the reader converts neither).
QEL_SERIALIZE_EXPORT void CheckJson(std::string_view text, std::size_t maximumDepth = MaximumDepth);

}  // namespace qel::serialize
