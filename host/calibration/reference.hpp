#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "calibration/calibration.hpp"

namespace qel::host::calibration {

/// Something of known length that a person has marked in a picture.
struct Reference {
    enum class Kind {
        Ground,   ///< a segment on the ground, from one end to the other
        Vertical  ///< an upright segment standing on the ground: from is its foot, to its top
    };

    Kind kind;
    Pixel from, to;
    double metres;
    /// Standard error of metres; 0 for an exact length.
    double tolerance = 0;
    /// How messages call it.
    std::string name{};
};

/// What a mounting is to be found from.
struct Problem {
    Size size;
    std::vector<Reference> references;
    /// The parameters that are known, in their units; the others are to be found.
    std::array<std::optional<double>, ParameterCount> fixed{};
    /// Standard error of a marked position, in pixels, along each axis.
    double clickError = 1;
};

}  // namespace qel::host::calibration
