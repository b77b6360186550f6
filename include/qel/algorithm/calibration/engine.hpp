#pragma once

#include <memory>

#include "qel/algorithm/calibration/params.hpp"
#include "qel/algorithm/export.hpp"
#include "qel/geometry/dimension.hpp"
#include "qel/geometry/normalized/value.hpp"
#include "qel/geometry/point.hpp"

namespace qel::algorithm::calibration {

/// Turns points of a picture into metres on flat ground, from the way the camera is mounted.
///
/// Picture points are normalised: 0 to 65535 along each axis over the whole picture, origin at the top left. Ground
/// points are metres from the point below the camera: x to the right, y forward.
/// The model is built by the first measurement and again when the mounting or the picture's size changes; measuring may
/// therefore change the engine: one engine serves one thread at a time. An engine is small; keep one for each stream.
class QEL_ALGORITHM_EXPORT Engine {
public:
    using Point = geometry::Point<geometry::normalized::Value<unsigned short>, 2>;

    /// Without a mounting (status -1): measurements throw until SetCalibrationParams.
    Engine();
    Engine(Engine const&) = delete;
    Engine& operator=(Engine const&) = delete;
    ~Engine();

    /// The enabled flag of the mounting.
    bool IsCalibrationEnabled() const;

    /// -1: no mounting set yet; 0: steep view, heights are measured sideways; 1: oblique view, heights are measured by
    /// projecting the object's top. Measurements need a status that is not negative.
    int GetCalibrationStatus() const;

    Params const& GetCalibrationParams() const;

    /// Stores a copy. The mounting's ranges are not enforced: the status becomes 0 or 1 whatever the values.
    void SetCalibrationParams(Params const& params);

    /// Ground position in metres of a picture point by the model of the last measurement; (0, 0) where the model has no
    /// answer (on the horizon) and before the first measurement. Checks nothing, builds nothing.
    geometry::Point<float, 2> UnprojectPoint(Point point) const;

    /// Distance on the ground between two picture points. imageSize: the picture's size in pixels.
    /// Throws std::runtime_error without an enabled mounting.
    Length GetDistance(Point a, Point b, geometry::Dimension<int, 2> const& imageSize) const;

    /// Height of an object on the ground. foot: its bottom centre; objectHeight: its extent in the picture, in units of
    /// the y axis. Throws std::runtime_error without an enabled mounting, for a foot more than 500 m ahead or behind
    /// ("Target is too far") and for a height below zero ("Negative height").
    Length GetHeight(Point foot, geometry::normalized::Value<unsigned short> objectHeight,
                     geometry::Dimension<int, 2> const& imageSize) const;

    /// The record behind the engine; complete inside the library only.
    struct QEL_ALGORITHM_NO_EXPORT Impl;

private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::algorithm::calibration
