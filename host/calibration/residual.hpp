#pragma once

#include <ceres/jet.h>

#include "calibration/reference.hpp"

namespace qel::host::calibration {

/// The length that a model gives a reference; nothing where the model sees part of it on or above the horizon.
template <class T>
std::optional<T> MeasureReference(Model<T> const& model, Reference::Kind kind, Position<T> const& from,
                                  Position<T> const& to) {
    auto const start = model.Unproject(from);
    if (!(start.scale > T(0.0))) return std::nullopt;
    if (kind == Reference::Kind::Vertical) return model.GetObliqueHeight(start, to.y);
    auto const end = model.Unproject(to);
    if (!(end.scale > T(0.0))) return std::nullopt;
    return Model<T>::GetDistance(start, end);
}

/// A reference's length by a mounting, and its derivatives.
struct Measured {
    double length;
    /// By the parameters: metres a degree, metres a metre.
    std::array<double, ParameterCount> byParameter;
    /// Standard error that the click errors and the reference's own tolerance give, in metres.
    double error;
};

/// Nothing where the mounting sees part of the reference on or above the horizon.
std::optional<Measured> Measure(Mounting<double> const& mounting, Size size, Reference const& reference,
                                double clickError);

}  // namespace qel::host::calibration
