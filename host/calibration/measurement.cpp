#include "calibration/measurement.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <ceres/jet.h>

namespace qel::host::calibration {
namespace {

constexpr int Variables = static_cast<int>(ParameterCount) + 4;
using Jet = ceres::Jet<double, Variables>;

/// A share of the picture as the engine takes it.
unsigned short Normalise(double share) {
    return static_cast<unsigned short>(std::lround(std::clamp(share * 65536, 0.0, 65535.0)));
}

algorithm::calibration::Engine::Point Normalise(Pixel pixel, Size size) {
    return {{Normalise(pixel.x / size.width)}, {Normalise(pixel.y / size.height)}};
}

Model<Jet> MakeModel(Calibration const& calibration, Size size) {
    Mounting<double> const& m = calibration.mounting;
    return {{Jet(m.tilt, 0), Jet(m.roll, 1), Jet(m.height, 2), Jet(m.verticalFov, 3)}, size};
}

/// Standard error of a result whose derivatives are by the four parameters and by four picture coordinates.
double GetError(Jet const& result, Calibration const& calibration, double clickError) {
    double variance = result.v.tail<4>().squaredNorm() * clickError * clickError;
    if (calibration.covariance) {
        for (std::size_t row = 0; row < ParameterCount; ++row) {
            for (std::size_t column = 0; column < ParameterCount; ++column) {
                variance += result.v[static_cast<Eigen::Index>(row)] * (*calibration.covariance)[row][column] *
                            result.v[static_cast<Eigen::Index>(column)];
            }
        }
    }
    return std::sqrt(variance);
}

}  // namespace

Measurer::Measurer(Calibration const& calibration, Size size, double clickError)
    : calibration_(calibration), size_(size), clickError_(clickError), model_(calibration.mounting, size) {
    engine_.SetCalibrationParams(ToParams(calibration.mounting));
}

void Measurer::RequireGround(Pixel pixel) const {
    if (!(model_.Unproject(pixel).scale > 0)) throw std::runtime_error("Point is not on the ground");
}

Measurement Measurer::GetDistance(Pixel from, Pixel to) const {
    RequireGround(from);
    RequireGround(to);
    double const metres = engine_.GetDistance(Normalise(from, size_), Normalise(to, size_), size_).value();
    Model<Jet> const model = MakeModel(calibration_, size_);
    auto const a = model.Unproject({Jet(from.x, 4), Jet(from.y, 5)});
    auto const b = model.Unproject({Jet(to.x, 6), Jet(to.y, 7)});
    Jet const dx = a.x - b.x, dy = a.y - b.y;
    // Points that coincide have a distance without a derivative: any direction is as good.
    bool const coincide = dx.a == 0 && dy.a == 0;
    return {metres, GetError(coincide ? dy : Jet(sqrt(dx * dx + dy * dy)), calibration_, clickError_)};
}

Measurement Measurer::GetHeight(Pixel foot, double extent) const {
    double const metres = engine_.GetHeight(Normalise(foot, size_), {Normalise(extent / size_.height)}, size_).value();
    RequireGround(foot);
    Model<Jet> const model = MakeModel(calibration_, size_);
    Position<Jet> const from{Jet(foot.x, 4), Jet(foot.y, 5)};
    Jet const top(foot.y - extent, 6);
    bool const isOblique = engine_.GetCalibrationStatus() == 1;
    Jet const height =
        isOblique ? model.GetObliqueHeight(model.Unproject(from), top) : model.GetSteepHeight(from, Jet(from.y - top));
    return {metres, GetError(height, calibration_, clickError_)};
}

Measurement Measurer::GetDistanceFromCamera(Pixel pixel) const {
    RequireGround(pixel);
    auto const ground = MakeModel(calibration_, size_).Unproject({Jet(pixel.x, 4), Jet(pixel.y, 5)});
    bool const isBelow = ground.x.a == 0 && ground.y.a == 0;
    Jet const distance = isBelow ? ground.y : Jet(sqrt(ground.x * ground.x + ground.y * ground.y));
    return {distance.a, GetError(distance, calibration_, clickError_)};
}

geometry::Point<double, 2> Measurer::GetGround(Pixel pixel) const {
    RequireGround(pixel);
    auto const ground = model_.Unproject(pixel);
    return {ground.x, ground.y};
}

}  // namespace qel::host::calibration
