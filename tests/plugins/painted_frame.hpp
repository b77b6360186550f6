#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qel/media/colour/rgb.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::test {

/// A frame of any format that owns its pixels and is painted with colours. Black and without colour at first.
class PaintedFrame {
public:
    using Frame = media::video::FrameBase<void const>;
    using ColourFormat = media::ColourFormat;
    using Rgb = media::colour::Rgb;

    /// gap: bytes between the rows.
    PaintedFrame(ColourFormat format, unsigned int width, unsigned int height, std::size_t gap = 0)
        : format_(format), width_(width), height_(height) {
        bool const isNv12 = format == ColourFormat::Nv12, isGrey = format == ColourFormat::Grey8;
        strides_ = {std::size_t{width} * (isNv12 || isGrey ? 1 : 3) + gap, (std::size_t{width} + 1) / 2 * 2 + gap};
        planes_[0].resize(strides_[0] * height);
        if (isNv12) planes_[1].resize(strides_[1] * ((height + 1) / 2), 128);
    }

    /// Paints columns x0 to x1 - 1 of rows y0 to y1 - 1, as far as there are such. Nv12: even borders.
    void Paint(unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, Rgb colour) {
        for (unsigned int y = y0; y < std::min(y1, height_); ++y) {
            for (unsigned int x = x0; x < std::min(x1, width_); ++x) Set(x, y, colour);
        }
    }
    void Paint(Rgb colour) { Paint(0, 0, width_, height_, colour); }

    Frame Get() const {
        auto const plane = [this](std::size_t i) {
            return media::video::frame::PlaneBase<void const>(planes_[i].size(), planes_[i].data(),
                                                              static_cast<std::int64_t>(strides_[i]));
        };
        Frame::Planes planes{};
        planes[0] = plane(0);
        if (format_ == ColourFormat::Nv12) planes[1] = plane(1);
        return {planes, format_, width_, height_, {}, {}, {}, {}};
    }

protected:
    ColourFormat GetFormat() const { return format_; }
    std::array<std::vector<std::uint8_t>, 2>& GetPlanes() { return planes_; }
    /// The first byte of a pixel.
    std::uint8_t const* PixelAt(unsigned int x, unsigned int y) const { return &planes_[0][PixelOffset(x, y)]; }
    /// Its pair of chroma; of Nv12 alone.
    std::uint8_t const* ChromaAt(unsigned int x, unsigned int y) const { return &planes_[1][ChromaOffset(x, y)]; }

private:
    std::size_t PixelOffset(unsigned int x, unsigned int y) const {
        bool const isSingle = format_ == ColourFormat::Nv12 || format_ == ColourFormat::Grey8;
        return y * strides_[0] + std::size_t{isSingle ? 1U : 3U} * x;
    }
    std::size_t ChromaOffset(unsigned int x, unsigned int y) const { return y / 2 * strides_[1] + x / 2 * 2; }

    void Set(unsigned int x, unsigned int y, Rgb const& colour) {
        double const r = colour.red, g = colour.green, b = colour.blue;
        auto const round = [](double value) { return static_cast<std::uint8_t>(value + 0.5); };
        std::array<std::uint8_t, 3> const yuv{round(16 + 0.25679 * r + 0.50413 * g + 0.09791 * b),
                                              round(128 - 0.14822 * r - 0.29099 * g + 0.43922 * b),
                                              round(128 + 0.43922 * r - 0.36779 * g - 0.07143 * b)};
        std::uint8_t* const pixel = &planes_[0][PixelOffset(x, y)];
        auto const put = [pixel](std::array<std::uint8_t, 3> const& bytes) { std::copy_n(bytes.data(), 3, pixel); };
        switch (format_) {
            case ColourFormat::Nv12:
                pixel[0] = yuv[0];
                std::copy_n(&yuv[1], 2, &planes_[1][ChromaOffset(x, y)]);
                return;
            case ColourFormat::Grey8:
                pixel[0] = round(0.299 * r + 0.587 * g + 0.114 * b);
                return;
            case ColourFormat::Yuv24:
                return put(yuv);
            case ColourFormat::Bgr24:
                return put({colour.blue, colour.green, colour.red});
            case ColourFormat::Rgb24:
                return put({colour.red, colour.green, colour.blue});
        }
    }

    ColourFormat format_;
    unsigned int width_, height_;
    std::array<std::size_t, 2> strides_{};
    std::array<std::vector<std::uint8_t>, 2> planes_;
};

}  // namespace qel::test
