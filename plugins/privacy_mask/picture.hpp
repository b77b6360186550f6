#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "qel/media/video/frame.hpp"

namespace qel::privacy_mask {

/// The samples of one plane, which may be written. The stride is in bytes; padded and negative ones are fine.
struct Plane {
    std::uint8_t* first = nullptr;
    std::ptrdiff_t stride = 0;
    unsigned int width = 0;  ///< samples a row
    unsigned int height = 0;
    unsigned int bytes = 1;  ///< of a sample: 1, 2 (a pair of chroma) or 3
    std::array<std::uint8_t, 3> black{};

    std::uint8_t* Row(unsigned int y) const { return first + static_cast<std::ptrdiff_t>(y) * stride; }
};

/// What there is to be hidden of a frame: the pixels, and for Nv12 the chroma, a sample for two by two pixels.
struct Picture {
    Plane pixels;
    Plane chroma;
    bool hasChroma = false;
};

/// Throws std::invalid_argument for a frame without an image, of another format, or whose planes are too small for its
/// size.
Picture ViewOf(media::video::FrameBase<void>& frame);

}  // namespace qel::privacy_mask
