#pragma once

#include <array>

#include "qel/algorithm/calibration/engine.hpp"
#include "qel/algorithm/calibration/matrix.hpp"

namespace qel::algorithm::calibration {

/// The engine's record: the mounting, and the model cached from it and from the picture's size.
struct Engine::Impl {
    using Logical = geometry::Point<float, 2>;
    using Ground = geometry::Point<float, 2>;

    /// Sets status to 0 or 1 from the mounting.
    void UpdateStatus();
    bool IsCalibrationValid() const;
    /// Builds the model for dimension; does nothing while status is negative or a side of dimension is 0.
    void RecalculateModel() const;
    /// Builds the model when size is not the one it was last built for.
    void UpdateModel(geometry::Dimension<int, 2> const& size) const;
    /// Logical coordinates: -1 to 1 from left to right, 1 to -1 from top to bottom.
    static Logical GetLogicalCoord(Point point);
    /// Ground position of a logical point, (0, 0) on the horizon.
    Ground UnprojectPoint(Logical point) const;

    /// Throws std::runtime_error unless measurements may be made.
    void RequireCalibration() const;
    float GetDistance(Point a, Point b) const;
    float GetHeight(Point foot, unsigned short objectHeight) const;
    /// Height at which a point above ground projects to the object's top, for oblique views.
    float GetObliqueHeight(Ground ground, unsigned short footY, unsigned short objectHeight) const;
    /// The object's extent laid sideways on the ground, for steep views.
    float GetSteepHeight(Ground ground, unsigned short footX, float logicalY, unsigned short objectHeight) const;

    Params params;
    int status = -1;
    mutable geometry::Dimension<int, 2> dimension;
    mutable float aspectRatio = 0;
    mutable Matrix groundToImage{};
    mutable Matrix imageToGround{};
    mutable std::array<float, 3> verticalAxis{};
};

}  // namespace qel::algorithm::calibration
