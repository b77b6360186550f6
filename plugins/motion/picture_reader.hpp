#pragma once

#include <cstdint>
#include <vector>

#include "background_model.hpp"
#include "common/frame_check.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::motion {

/// Shows frames of any of the five colour formats as luma with chroma at half size.
///
/// Nv12 and Grey8 are looked at where they are; the formats of three bytes a pixel are converted into buffers that the
/// reader keeps, so a picture lasts until the next Read. Red, green and blue become luma and chroma by ITU-R BT.601.
class PictureReader {
public:
    /// Throws std::invalid_argument for a frame without an image, of another format, or whose planes are too small
    /// for its size.
    Picture Read(media::video::FrameBase<void const> const& frame);

private:
    using Check = plugin::FrameCheck<void const>;

    template <class Convert>
    Picture ReadPacked(Check const& check, media::video::FrameBase<void const> const& frame, Convert convert);

    std::vector<std::uint8_t> luma_;
    std::vector<std::uint8_t> chroma_;
    std::vector<std::uint16_t> sums_;  // of U and V of the pixels of one chroma row
};

}  // namespace qel::motion
