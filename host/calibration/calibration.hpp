#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "calibration/model.hpp"
#include "qel/algorithm/calibration/params.hpp"

namespace qel::host::calibration {

constexpr std::size_t ParameterCount = 4;

/// The numbers of a mounting, in the order of Mounting, of arrays and of covariances.
enum class Parameter { Tilt, Roll, Height, VerticalFov };

constexpr std::array<char const*, ParameterCount> ParameterNames{"tilt", "roll", "height_m", "vertical_fov"};
constexpr std::array<char const*, ParameterCount> ParameterUnits{"degrees", "degrees", "m", "degrees"};

/// Smallest and largest value that a parameter is accepted with; the ends belong to the range.
struct Range {
    double low, high;
};
constexpr std::array<Range, ParameterCount> ParameterRanges{{{-90, 180}, {-180, 180}, {0.01, 10000}, {0.1, 179.9}}};

template <class T>
std::array<T, ParameterCount> ToArray(Mounting<T> const& mounting) {
    return {mounting.tilt, mounting.roll, mounting.height, mounting.verticalFov};
}

template <class T>
Mounting<T> ToMounting(std::array<T, ParameterCount> const& values) {
    return {values[0], values[1], values[2], values[3]};
}

/// Of the parameters' errors, in their units; zero rows and columns for what is known exactly.
using Covariance = std::array<std::array<double, ParameterCount>, ParameterCount>;

/// What a calibration file holds: a mounting and, where it was estimated, how well it is known.
struct Calibration {
    Mounting<double> mounting;
    std::optional<Covariance> covariance;
};

/// The enabled mounting for algorithm::calibration::Engine.
inline algorithm::calibration::Params ToParams(Mounting<double> const& mounting) {
    return {static_cast<float>(mounting.tilt), static_cast<float>(mounting.roll),
            static_cast<float>(mounting.height) * boost::units::si::meters, static_cast<float>(mounting.verticalFov)};
}

}  // namespace qel::host::calibration
