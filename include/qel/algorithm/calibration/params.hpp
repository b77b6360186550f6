#pragma once

#include <memory>
#include <ostream>

#include <boost/units/io.hpp>
#include <boost/units/quantity.hpp>
#include <boost/units/systems/si/io.hpp>
#include <boost/units/systems/si/length.hpp>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::calibration {

/// A length in metres.
using Length = boost::units::quantity<boost::units::si::length, float>;

/// How a camera is mounted: tilt, roll and vertical field of view in degrees, height above the ground in metres.
///
/// Tilt is the angle below the horizon (0 looks level, 90 straight down); a positive roll turns the picture's content
/// counter-clockwise; the field of view is the full vertical angle. Any value is stored as given.
/// A moved-from object may only be destroyed or assigned to. A value: one thread at a time.
class QEL_ALGORITHM_EXPORT Params {
public:
    /// Not enabled, every number 0.
    Params();
    /// Enabled, with the given mounting. Note the order: the field of view comes last.
    Params(float tilt, float roll, Length height, float verticalFov);
    Params(bool enabled, float tilt, float roll, Length height, float verticalFov);
    Params(Params const& other);
    Params(Params&& other) noexcept;
    Params& operator=(Params other) noexcept;
    ~Params();

    bool IsEnabled() const;
    float GetTilt() const;
    float GetRoll() const;
    Length GetHeight() const;
    float GetVerticalFov() const;

    void SetEnabled(bool enabled);
    void SetTilt(float tilt);
    void SetRoll(float roll);
    void SetHeight(Length height);
    void SetVerticalFov(float verticalFov);

    /// Equal in every field, without tolerance: an object that holds a NaN equals nothing, not even itself.
    bool operator==(Params const& other) const;
    bool operator!=(Params const& other) const;

    friend QEL_ALGORITHM_EXPORT void swap(Params& left, Params& right) noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Exchanges the two mountings; either may be moved-from.
QEL_ALGORITHM_EXPORT void swap(Params& left, Params& right) noexcept;

/// Writes {"enabled":1, "tilt":30, "roll":0, "height":4.5 m, "fov":60}: a text for logs, not JSON.
/// The stream's flags apply, those of Boost.Units to the height.
inline std::ostream& operator<<(std::ostream& stream, Params const& params) {
    // Inline because Boost.Units keeps its stream flags in a slot of its own in each library of hidden symbols:
    // compiled into ours, this would not see the format that the caller has set.
    return stream << "{\"enabled\":" << params.IsEnabled() << ", \"tilt\":" << params.GetTilt()
                  << ", \"roll\":" << params.GetRoll() << ", \"height\":" << params.GetHeight()
                  << ", \"fov\":" << params.GetVerticalFov() << '}';
}

}  // namespace qel::algorithm::calibration
