#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "qel/logging/argument.hpp"

namespace qel::logging {

/// The text with its placeholders "%N%" filled in, as Logger::Log describes.
std::string Format(std::string_view format, Argument const* arguments, std::size_t count);

}  // namespace qel::logging
