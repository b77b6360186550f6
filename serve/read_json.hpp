#pragma once

#include <string_view>

#include <boost/json/value.hpp>

namespace qel::serve {

/// Reads JSON as boost::json::parse does, but every number to its last digit: what is written is read back the same.
/// Throws boost::system::system_error for a text that is no JSON, or nested deeper than serialize::MaximumDepth.
boost::json::value ReadJson(std::string_view text);

}  // namespace qel::serve
