#pragma once

#include <cstdint>
#include <iosfwd>

#include "qel/media/export.hpp"
#include "qel/type/name.hpp"
#include "qel/type/strings.hpp"

namespace qel::media {

/// How the pixels of a frame are laid out.
enum class ColourFormat : std::int32_t {
    Grey8 = 0,  ///< one plane, one byte a pixel: luma
    Rgb24 = 1,  ///< one plane, three bytes a pixel: red, green, blue
    Bgr24 = 2,  ///< one plane, three bytes a pixel: blue, green, red
    Yuv24 = 3,  ///< one plane, three bytes a pixel: Y, U, V
    Nv12 = 4,   ///< a plane of Y, and a half-height plane of U, V pairs, one pair for 2 x 2 pixels
};

/// Writes the format's name in double quotes, or the number of a value that has none.
QEL_MEDIA_EXPORT std::ostream& operator<<(std::ostream& stream, ColourFormat format);

}  // namespace qel::media

template <>
struct QEL_MEDIA_EXPORT qel::type::Name<qel::media::ColourFormat> {
    static constexpr char const* Value = "qel.media.ColourFormat";
};

template <>
struct QEL_MEDIA_EXPORT qel::type::Strings<qel::media::ColourFormat> {
    static StringMap const& GetMap();
};
