#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "calibration/calibration.hpp"
#include "frame_source.hpp"
#include "qel/algorithm/video/result.hpp"
#include "viewer.hpp"

namespace qel::serve {

/// What there is to see of a frame.
struct Scene {
    host::FrameSource::Frame frame;
    std::vector<algorithm::video::Object> objects{};
    /// Of a calibrated stream.
    std::optional<host::calibration::Mounting<double>> mounting{};
    std::uint64_t sequence = 0;
};

/// Throws host::Error for a frame that no JPEG can be made of.
LivePicture Draw(Scene const& scene, LookOptions const& options);

}  // namespace qel::serve
