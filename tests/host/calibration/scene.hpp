#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "calibration/solver.hpp"

/// Synthetic scenes: a camera over flat ground and marks on its picture that are off by a Gaussian click error.
namespace qel::host::calibration::test {

constexpr Size Picture{1280, 720};

/// A number of a normal distribution, the same on every machine.
class Random {
public:
    explicit Random(std::uint32_t seed) : engine_(seed) {}

    double Uniform(double low, double high) {
        return low + (high - low) * (static_cast<double>(engine_()) + 0.5) * 0x1p-32;
    }
    double Normal(double error) {
        double const radius = std::sqrt(-2 * std::log(Uniform(0, 1)));
        return error * radius * std::cos(Uniform(0, 2 * std::numbers::pi));
    }

private:
    std::mt19937 engine_;
};

/// Where a point in space is seen, by plain geometry.
inline Pixel Project(Mounting<double> const& camera, Size size, double x, double y, double z = 0) {
    constexpr double Degree = std::numbers::pi / 180;
    double const down = camera.height - z;
    double const depth = y * std::cos(camera.tilt * Degree) + down * std::sin(camera.tilt * Degree);
    double const up = y * std::sin(camera.tilt * Degree) - down * std::cos(camera.tilt * Degree);
    double const c = std::cos(camera.roll * Degree), s = std::sin(camera.roll * Degree);
    double const focal = size.height / 2.0 / std::tan(camera.verticalFov * Degree / 2);
    return {size.width / 2.0 + focal * (c * x - s * up) / depth, size.height / 2.0 - focal * (s * x + c * up) / depth};
}

inline Pixel Click(Random& random, Pixel exact, double error) {
    return {exact.x + random.Normal(error), exact.y + random.Normal(error)};
}

inline bool IsInside(Pixel pixel, Size size) {
    return pixel.x > 0 && pixel.x < size.width && pixel.y > 0 && pixel.y < size.height;
}

/// A segment on the ground or an upright one, exact.
struct Truth {
    Reference::Kind kind;
    Pixel from, to;
    double metres;
};

/// A random ground segment of 1.5 to 8 m inside the picture and within reach metres ahead.
inline Truth MakeGround(Random& random, Mounting<double> const& camera, double reach, Size size = Picture) {
    for (;;) {
        Model<double> const model(camera, size);
        auto const spot = model.Unproject({random.Uniform(0, size.width), random.Uniform(0, size.height)});
        double const angle = random.Uniform(0, 2 * std::numbers::pi), metres = random.Uniform(1.5, 8);
        double const x = spot.x + metres * std::cos(angle), y = spot.y + metres * std::sin(angle);
        if (spot.scale <= 0 || spot.y > reach || y > reach || y < 0) continue;
        Truth const truth{Reference::Kind::Ground, Project(camera, size, spot.x, spot.y), Project(camera, size, x, y),
                          metres};
        if (IsInside(truth.from, size) && IsInside(truth.to, size)) return truth;
    }
}

/// A random person of 1.5 to 2 m inside the picture; seen as the engine sees one, by the row of the top.
inline Truth MakeVertical(Random& random, Mounting<double> const& camera, double reach, Size size = Picture) {
    for (;;) {
        Model<double> const model(camera, size);
        auto const spot = model.Unproject({random.Uniform(0, size.width), random.Uniform(0, size.height)});
        double const metres = random.Uniform(1.5, 2);
        if (spot.scale <= 0 || spot.y > reach) continue;
        Truth const truth{Reference::Kind::Vertical, Project(camera, size, spot.x, spot.y),
                          Project(camera, size, spot.x, spot.y, metres), metres};
        bool const isUpright = truth.to.y < truth.from.y - 10;
        if (isUpright && IsInside(truth.from, size) && IsInside(truth.to, size)) return truth;
    }
}

inline Reference Mark(Random& random, Truth const& truth, double clickError) {
    return {truth.kind, Click(random, truth.from, clickError), Click(random, truth.to, clickError), truth.metres};
}

/// A camera as people mount them, oblique.
inline Mounting<double> MakeCamera(Random& random) {
    return {random.Uniform(12, 40), random.Uniform(-5, 5), random.Uniform(2.5, 10), random.Uniform(30, 70)};
}

inline Problem MakeProblem(Random& random, Mounting<double> const& camera, int grounds, int verticals,
                           double clickError = 1) {
    Problem problem{Picture, {}, {}, clickError};
    double const reach = 6 * camera.height;
    for (int i = 0; i < grounds; ++i)
        problem.references.push_back(Mark(random, MakeGround(random, camera, reach), clickError));
    for (int i = 0; i < verticals; ++i) {
        problem.references.push_back(Mark(random, MakeVertical(random, camera, reach), clickError));
    }
    return problem;
}

}  // namespace qel::host::calibration::test
