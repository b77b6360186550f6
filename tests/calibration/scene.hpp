#pragma once

#include <cmath>
#include <numbers>

#include "qel/algorithm/calibration/engine.hpp"

/// What the calibration tests measure: pictures of a pinhole camera over flat ground, projected in double precision.
namespace qel::algorithm::calibration::test {

inline Length Metres(float value) { return value * boost::units::si::meters; }

inline Engine::Point At(unsigned int x, unsigned int y) {
    return {{static_cast<unsigned short>(x)}, {static_cast<unsigned short>(y)}};
}

inline geometry::normalized::Value<unsigned short> Extent(unsigned int value) {
    return {static_cast<unsigned short>(value)};
}

/// A camera as a person would describe it: it stands at (0, 0, height), looks forward along y, tilted down and rolled.
struct Camera {
    double tilt, roll, height, fov;

    Params ToParams() const {
        return {static_cast<float>(tilt), static_cast<float>(roll), Metres(static_cast<float>(height)),
                static_cast<float>(fov)};
    }
};

struct Spot {
    double x, y;
};

/// Normalised picture position (0 to 65536) of a point in space, aspect = picture width / height.
inline Spot Project(Camera const& camera, double aspect, double x, double y, double z) {
    constexpr double Degree = std::numbers::pi / 180;
    double const down = camera.height - z;
    double const depth = y * std::cos(camera.tilt * Degree) + down * std::sin(camera.tilt * Degree);
    double const up = y * std::sin(camera.tilt * Degree) - down * std::cos(camera.tilt * Degree);
    double const c = std::cos(camera.roll * Degree), s = std::sin(camera.roll * Degree);
    double const focal = 1 / std::tan(camera.fov * Degree / 2);
    double const right = focal * (c * x - s * up) / depth / aspect;
    double const upwards = focal * (s * x + c * up) / depth;
    return {(1 + right) * 32768, (1 - upwards) * 32768};
}

inline Engine::Point ToPoint(Spot spot) {
    return At(static_cast<unsigned int>(std::lround(spot.x)), static_cast<unsigned int>(std::lround(spot.y)));
}

}  // namespace qel::algorithm::calibration::test
