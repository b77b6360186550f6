#pragma once

#include <string>

#include "calibration/reference.hpp"

namespace qel::app {

/// Each reads an argument and throws host::UsageError with the option's name where it is wrong.

/// "768x576": a picture's size in pixels.
host::calibration::Size ParseSize(std::string const& option, std::string const& text);

/// "120.5,400": a position in a picture, in pixels.
host::calibration::Pixel ParsePixel(std::string const& option, std::string const& text);

/// "120,400:380,410=5.2" or, with a standard error of the length, "120,400:380,410=5.2~0.1".
host::calibration::Reference ParseReference(std::string const& option, host::calibration::Reference::Kind kind,
                                            std::string const& text);

/// "roll=0": a parameter that is known; sets it in fixed.
void ParseFixed(std::string const& text, host::calibration::Problem& problem);

}  // namespace qel::app
