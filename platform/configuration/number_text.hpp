#pragma once

#include <string>

namespace qel::configuration::detail {

/// The shortest text that stands for the number: as a double, if it is one.
std::string NumberText(long double number);

}  // namespace qel::configuration::detail
