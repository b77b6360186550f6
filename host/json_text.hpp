#pragma once

#include <string>

#include <boost/json/value.hpp>

namespace qel::host {

/// A value of JSON as a person writes it: texts without quotes, numbers as short as they can be, elements of arrays
/// separated by a comma and a blank.
std::string FormatJson(boost::json::value const& value);

/// JSON on one line, with numbers as people write them: 6.0 and 0.5, and an exponent only for very large and small
/// ones.
std::string SerializeJson(boost::json::value const& value);

}  // namespace qel::host
