#pragma once

#include <cstddef>
#include <cstdint>

#include "common/from_yuv.hpp"
#include "qel/media/colour/rgb.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::colour_classifier {

/// The pixels of a frame of Nv12, Yuv24, Rgb24 or Bgr24, looked at where they are.
struct Picture {
    media::ColourFormat format{};
    std::uint8_t const* pixels = nullptr;  ///< the luma of Nv12, three bytes a pixel of the others
    std::ptrdiff_t stride = 0;             ///< in bytes, below zero for a picture upside down
    std::uint8_t const* chroma = nullptr;  ///< of Nv12: a pair for two by two pixels
    std::ptrdiff_t chromaStride = 0;
};

/// Throws std::invalid_argument for a frame without an image, of another format, or whose planes are too small for its
/// size.
Picture ViewOf(media::video::FrameBase<void const> const& frame);

/// A row of a picture of one format: the colour of each of its pixels.
template <media::ColourFormat Format>
class Row {
public:
    Row(Picture const& picture, unsigned int y)
        : pixels_(picture.pixels + static_cast<std::ptrdiff_t>(y) * picture.stride),
          chroma_(Format == media::ColourFormat::Nv12
                      ? picture.chroma + static_cast<std::ptrdiff_t>(y / 2) * picture.chromaStride
                      : nullptr) {}

    media::colour::Rgb operator[](std::size_t x) const {
        if constexpr (Format == media::ColourFormat::Nv12) {
            return plugin::FromYuv(pixels_[x], chroma_[x / 2 * 2], chroma_[x / 2 * 2 + 1]);
        }
        std::uint8_t const* const pixel = pixels_ + 3 * x;
        if constexpr (Format == media::ColourFormat::Yuv24) return plugin::FromYuv(pixel[0], pixel[1], pixel[2]);
        if constexpr (Format == media::ColourFormat::Bgr24) return {pixel[2], pixel[1], pixel[0]};
        return {pixel[0], pixel[1], pixel[2]};
    }

private:
    std::uint8_t const* pixels_;
    std::uint8_t const* chroma_;
};

}  // namespace qel::colour_classifier
