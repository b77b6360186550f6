#pragma once

#include <cstdint>
#include <vector>

#include "qel/geometry/rectangle.hpp"
#include "qel/inference/picture.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::classifier {

/// Shows parts of one frame as pictures: where they are, or, of frames in YUV, converted into buffers that it keeps.
class Cropper {
public:
    using Frame = media::video::FrameBase<void const>;
    using Box = geometry::Rectangle<unsigned int>;

    /// The pictures of the boxes, each made larger on each side by `margin` times its size and cut off at the frame's
    /// border; a box without pixels in the frame gives a picture of size 0 x 0. They last until the next call, and as
    /// long as the frame. Throws std::invalid_argument for a frame without an image, of another format than Nv12,
    /// Grey8, Yuv24, Rgb24 and Bgr24, or whose planes are too small for its size.
    std::vector<inference::Picture> const& Crop(Frame const& frame, std::vector<Box> const& boxes, double margin);

private:
    void Convert(Frame const& frame, Box const& box, std::vector<std::uint8_t>& pixels) const;

    std::vector<inference::Picture> pictures_;
    std::vector<std::vector<std::uint8_t>> buffers_;
};

}  // namespace qel::classifier
