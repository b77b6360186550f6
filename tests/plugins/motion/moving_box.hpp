#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "qel/media/video/frame.hpp"

namespace qel::motion {

/// A film of 96 x 64 grey frames: a flat background, and from a frame on a bright box on it.
class MovingBox {
public:
    static constexpr unsigned int Width = 96, Height = 64;

    /// The background alone.
    media::video::FrameBase<void const> Empty() { return Show(0, 0, 0, 0); }
    /// The box in columns x to x + w - 1 and rows y to y + h - 1, inclusive.
    media::video::FrameBase<void const> Show(unsigned int x, unsigned int y, unsigned int w, unsigned int h,
                                             std::uint8_t level = 220) {
        pixels_.assign(std::size_t{Width} * Height, 80);
        for (unsigned int row = y; row < y + h; ++row) {
            for (unsigned int column = x; column < x + w; ++column) pixels_[row * Width + column] = level;
        }
        return {{media::video::frame::PlaneBase<void const>(pixels_.size(), pixels_.data(), Width)},
                media::ColourFormat::Grey8,
                Width,
                Height,
                {},
                {},
                {},
                {}};
    }

private:
    std::vector<std::uint8_t> pixels_;
};

}  // namespace qel::motion
