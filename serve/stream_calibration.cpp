#include "stream_calibration.hpp"

#include <utility>

#include <sys/stat.h>

#include "calibration/calibration_file.hpp"

namespace qel::serve {

StreamCalibration::StreamCalibration(std::string path) : path_(std::move(path)), version_(GetVersion(path_)) { Read(); }

void StreamCalibration::Refresh() {
    Version const now = GetVersion(path_);
    if (now == version_) return;
    // Noted before it is read: what is written in between is found the next time.
    version_ = now;
    Read();
}

void StreamCalibration::Read() {
    auto const calibration = host::calibration::ReadCalibration(path_);
    mounting_ = calibration.mounting;
    measurer_.emplace(calibration, false);
}

void StreamCalibration::Measure(algorithm::video::Result& result, geometry::Dimension<unsigned int, 2> frameSize) {
    measurer_->Measure(result, {static_cast<int>(frameSize.width), static_cast<int>(frameSize.height)});
}

StreamCalibration::Version StreamCalibration::GetVersion(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

}  // namespace qel::serve
