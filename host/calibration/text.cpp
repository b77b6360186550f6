#include "calibration/text.hpp"

#include <cstdio>

namespace qel::host::calibration {

std::string Format(double value, int digits) {
    char text[64];
    int const length = std::snprintf(text, sizeof text, "%.*g", digits, value);
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace qel::host::calibration
