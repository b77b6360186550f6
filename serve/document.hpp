#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "fault.hpp"

/// What a configuration's file holds, as JSON: {"streams": {...}, "algorithms": {...}}.
namespace qel::serve {

/// How deep objects and lists may stand in one another, in a file and in a patch.
inline constexpr std::size_t MaximumNesting = 16;
/// How many bytes a file may have.
inline constexpr std::size_t MaximumDocumentSize = std::size_t{8} << 20U;

/// Reads a document with care. Throws Refused, with line and column, for what is no JSON object.
boost::json::object ParseDocument(std::string const& text);

/// The document as a person may read and write it: indented by two blanks, with a line end behind it. Throws Refused
/// when it is too long.
std::string FormatDocument(boost::json::object const& document);

/// What no document may hold: nesting beyond the maximum, numbers that are not finite, the character U+0000.
std::vector<Fault> CheckPatch(boost::json::object const& patch);

/// Changes a document as RFC 7396 says; members that stay keep their order, others come behind them. patch: checked.
void MergePatch(boost::json::object& document, boost::json::object const& patch);

}  // namespace qel::serve
