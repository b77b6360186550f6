#include "calibration/residual.hpp"

#include <cmath>

namespace qel::host::calibration {

std::optional<Measured> Measure(Mounting<double> const& mounting, Size size, Reference const& reference,
                                double clickError) {
    constexpr int Variables = static_cast<int>(ParameterCount) + 4;
    using Jet = ceres::Jet<double, Variables>;
    Model<Jet> const model(
        {Jet(mounting.tilt, 0), Jet(mounting.roll, 1), Jet(mounting.height, 2), Jet(mounting.verticalFov, 3)}, size);
    Position<Jet> const from{Jet(reference.from.x, 4), Jet(reference.from.y, 5)};
    Position<Jet> const to{Jet(reference.to.x, 6), Jet(reference.to.y, 7)};
    std::optional<Jet> const length = MeasureReference(model, reference.kind, from, to);
    if (!length || !std::isfinite(length->a)) return std::nullopt;
    Measured measured{length->a, {length->v[0], length->v[1], length->v[2], length->v[3]}, 0};
    double const clicks = length->v.tail<4>().squaredNorm() * clickError * clickError;
    measured.error = std::sqrt(clicks + reference.tolerance * reference.tolerance);
    return measured;
}

}  // namespace qel::host::calibration
