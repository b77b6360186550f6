#pragma once

#include <string>

#include <boost/json/value.hpp>

namespace qel::host {

/// A value of JSON as a person writes it: texts without quotes, numbers as short as they can be, elements of arrays
/// separated by a comma and a blank.
std::string FormatJson(boost::json::value const& value);

}  // namespace qel::host
