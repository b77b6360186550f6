#pragma once

#include <optional>
#include <string>

#include "calibration/calibration.hpp"
#include "calibration/object_measurer.hpp"
#include "qel/algorithm/video/result.hpp"
#include "qel/geometry/dimension.hpp"

namespace qel::serve {

/// The calibration of a stream, as a file holds it: the file may be written anew at any time. One thread at a time.
class StreamCalibration {
public:
    /// Reads the file. Throws host::Error.
    explicit StreamCalibration(std::string path);

    /// Reads the file again where it has been replaced or written since it was read. Throws host::Error.
    void Refresh();

    /// Adds metres to the objects of a frame.
    void Measure(algorithm::video::Result& result, geometry::Dimension<unsigned int, 2> frameSize);
    host::calibration::Mounting<double> const& GetMounting() const noexcept { return mounting_; }

private:
    /// What tells one state of a file from another.
    struct Version {
        unsigned long long device = 0, inode = 0;
        long long size = 0, seconds = 0, nanoseconds = 0;

        bool operator==(Version const&) const = default;
    };

    static Version GetVersion(std::string const& path);
    void Read();

    std::string path_;
    Version version_;
    host::calibration::Mounting<double> mounting_{};
    std::optional<host::calibration::ObjectMeasurer> measurer_;
};

}  // namespace qel::serve
