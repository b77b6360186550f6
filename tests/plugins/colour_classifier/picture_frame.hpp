#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"
#include "reference/colours.hpp"

namespace qel::colour_classifier {

/// A frame that owns its pixels, and knows the colour of each by the reference.
class PictureFrame {
public:
    using Frame = media::video::FrameBase<void const>;
    using ColourFormat = media::ColourFormat;

    /// gap: bytes between the rows.
    PictureFrame(ColourFormat format, unsigned int width, unsigned int height, std::size_t gap = 0)
        : format_(format), width_(width), height_(height) {
        bool const isNv12 = format == ColourFormat::Nv12, isGrey = format == ColourFormat::Grey8;
        strides_ = {std::size_t{width} * (isNv12 || isGrey ? 1 : 3) + gap, (std::size_t{width} + 1) / 2 * 2 + gap};
        planes_[0].resize(strides_[0] * height);
        if (isNv12) planes_[1].resize(strides_[1] * ((height + 1) / 2), 128);
    }

    void FillWithNoise(std::mt19937& random) {
        for (auto& plane : planes_) {
            for (std::uint8_t& byte : plane) byte = static_cast<std::uint8_t>(random());
        }
    }

    /// Paints columns x0 to x1 - 1 of rows y0 to y1 - 1. Nv12: even borders.
    void Paint(unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, reference::Rgb colour) {
        for (unsigned int y = y0; y < y1; ++y) {
            for (unsigned int x = x0; x < x1; ++x) Set(x, y, colour);
        }
    }
    void Paint(reference::Rgb colour) { Paint(0, 0, width_, height_, colour); }

    reference::Rgb At(unsigned int x, unsigned int y) const {
        std::uint8_t const* const luma = planes_[0].data() + y * strides_[0];
        std::uint8_t const* const p = luma + std::size_t{3} * x;
        switch (format_) {
            case ColourFormat::Nv12: {
                std::uint8_t const* const pair = planes_[1].data() + y / 2 * strides_[1] + x / 2 * 2;
                return reference::FromYuv(luma[x], pair[0], pair[1]);
            }
            case ColourFormat::Yuv24:
                return reference::FromYuv(p[0], p[1], p[2]);
            case ColourFormat::Bgr24:
                return {p[2], p[1], p[0]};
            default:
                return {p[0], p[1], p[2]};
        }
    }

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

private:
    void Set(unsigned int x, unsigned int y, reference::Rgb c) {
        double const r = c.red, g = c.green, b = c.blue;
        auto const round = [](double value) { return static_cast<std::uint8_t>(value + 0.5); };
        std::array<std::uint8_t, 3> const yuv{round(16 + 0.25679 * r + 0.50413 * g + 0.09791 * b),
                                              round(128 - 0.14822 * r - 0.29099 * g + 0.43922 * b),
                                              round(128 + 0.43922 * r - 0.36779 * g - 0.07143 * b)};
        std::uint8_t* const luma = planes_[0].data() + y * strides_[0];
        std::uint8_t* const p = luma + std::size_t{3} * x;
        auto const put = [p](std::uint8_t first, std::uint8_t second, std::uint8_t third) {
            p[0] = first;
            p[1] = second;
            p[2] = third;
        };
        switch (format_) {
            case ColourFormat::Nv12: {
                luma[x] = yuv[0];
                std::uint8_t* const pair = planes_[1].data() + y / 2 * strides_[1] + x / 2 * 2;
                pair[0] = yuv[1];
                pair[1] = yuv[2];
                break;
            }
            case ColourFormat::Yuv24:
                return put(yuv[0], yuv[1], yuv[2]);
            case ColourFormat::Bgr24:
                return put(c.blue, c.green, c.red);
            default:
                return put(c.red, c.green, c.blue);
        }
    }

    ColourFormat format_;
    unsigned int width_, height_;
    std::array<std::size_t, 2> strides_{};
    std::array<std::vector<std::uint8_t>, 2> planes_;
};

}  // namespace qel::colour_classifier
