#include "calibration/object_measurer.hpp"

#include <stdexcept>
#include <utility>

namespace qel::host::calibration {
namespace {

void MeasureObject(algorithm::video::Object& object, Measurer const& measurer, bool withUncertainty) {
    auto const& box = object.box;
    Pixel const foot{(static_cast<double>(box.x0) + box.x1) / 2, static_cast<double>(box.y1)};
    try {
        Measurement const height = measurer.GetHeight(foot, static_cast<double>(box.y1) - box.y0);
        Measurement const distance = measurer.GetDistanceFromCamera(foot);
        auto const ground = measurer.GetGround(foot);
        auto& attributes = object.attributes;
        attributes["ground_x_m"] = ground.x;
        attributes["ground_y_m"] = ground.y;
        attributes["distance_m"] = distance.metres;
        attributes["height_m"] = height.metres;
        if (!withUncertainty) return;
        attributes["distance_plus_minus_m"] = distance.GetPlusMinus();
        attributes["height_plus_minus_m"] = height.GetPlusMinus();
    } catch (std::runtime_error const& error) {
        object.attributes["measurement_error"] = std::string(error.what());
    }
}

}  // namespace

ObjectMeasurer::ObjectMeasurer(Calibration calibration, bool withUncertainty)
    : calibration_(std::move(calibration)), withUncertainty_(withUncertainty) {}

void ObjectMeasurer::Measure(algorithm::video::Result& result, Size frameSize) {
    if (!measurer_ || size_ != frameSize) {
        size_ = frameSize;
        measurer_.emplace(calibration_, frameSize);
    }
    for (algorithm::video::Object& object : result.objects) MeasureObject(object, *measurer_, withUncertainty_);
}

}  // namespace qel::host::calibration
