#pragma once

#include <cstdint>
#include <vector>

#include "qel/geometry/dimension.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::host {

/// An opaque colour picture: one 32-bit word 0xXXRRGGBB a pixel, rows without gaps; XX means nothing. It is
/// what cairo calls RGB24.
struct Picture {
    using Size = geometry::Dimension<unsigned int, 2>;

    Picture() = default;
    /// A black picture.
    explicit Picture(Size extent) : size(extent), pixels(static_cast<std::size_t>(extent.width) * extent.height, 0) {}

    Size size;
    std::vector<std::uint32_t> pixels;
};

/// The frame as a picture of the same size; YUV as BT.601 with video levels (16 to 235).
/// Throws Error for a colour format without a name, or planes smaller than the frame's size needs.
Picture ToPicture(media::video::FrameBase<void const> const& frame);

}  // namespace qel::host
