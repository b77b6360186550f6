#pragma once

#include <cstdint>
#include <random>

#include "plugins/painted_frame.hpp"
#include "reference/colours.hpp"

namespace qel::colour_classifier {

/// A painted frame that knows the colour of each pixel by the reference.
class PictureFrame : public test::PaintedFrame {
public:
    using PaintedFrame::PaintedFrame;

    void FillWithNoise(std::mt19937& random) {
        for (auto& plane : GetPlanes()) {
            for (std::uint8_t& byte : plane) byte = static_cast<std::uint8_t>(random());
        }
    }

    reference::Rgb At(unsigned int x, unsigned int y) const {
        std::uint8_t const* const p = PixelAt(x, y);
        switch (GetFormat()) {
            case ColourFormat::Nv12:
                return reference::FromYuv(p[0], ChromaAt(x, y)[0], ChromaAt(x, y)[1]);
            case ColourFormat::Yuv24:
                return reference::FromYuv(p[0], p[1], p[2]);
            case ColourFormat::Bgr24:
                return {p[2], p[1], p[0]};
            default:
                return {p[0], p[1], p[2]};
        }
    }
};

}  // namespace qel::colour_classifier
