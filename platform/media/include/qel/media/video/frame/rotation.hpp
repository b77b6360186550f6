#pragma once

#include <cstdint>

#include "qel/media/export.hpp"
#include "qel/type/name.hpp"
#include "qel/type/strings.hpp"

namespace qel::media::video::frame {

/// By how much the image must be turned clockwise to stand upright.
enum class Rotation : std::int32_t {
    None = 0,
    Clockwise90 = 1,
    Clockwise180 = 2,
    Clockwise270 = 3,
};

}  // namespace qel::media::video::frame

template <>
struct QEL_MEDIA_EXPORT qel::type::Name<qel::media::video::frame::Rotation> {
    static constexpr char const* Value = "qel.media.video.frame.Rotation";
};

template <>
struct QEL_MEDIA_EXPORT qel::type::Strings<qel::media::video::frame::Rotation> {
    static StringMap const& GetMap();
};
