#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::classifier {

using media::ColourFormat;

/// A frame of any format that is painted with red, green and blue by whole pairs of rows and columns.
class TestFrame {
public:
    using Frame = media::video::FrameBase<void const>;
    using Rgb = std::array<std::uint8_t, 3>;

    TestFrame(ColourFormat format, unsigned int width, unsigned int height)
        : format_(format),
          width_(width),
          height_(height),
          stride_((format == ColourFormat::Nv12 || format == ColourFormat::Grey8 ? width : 3 * width) + 7),
          first_(stride_ * height),
          second_(stride_ * ((height + 1) / 2)) {}

    /// Columns x0 to x1 - 1 of rows y0 to y1 - 1.
    void Paint(unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, Rgb const& rgb) {
        for (unsigned int y = y0; y < std::min(y1, height_); ++y) {
            for (unsigned int x = x0; x < std::min(x1, width_); ++x) Put(x, y, rgb);
        }
    }

    Frame Get() const {
        Frame::Planes planes{};
        auto const plane = [this](std::vector<std::uint8_t> const& bytes) {
            return media::video::frame::PlaneBase<void const>(bytes.size(), bytes.data(),
                                                              static_cast<std::int64_t>(stride_));
        };
        planes[0] = plane(first_);
        if (format_ == ColourFormat::Nv12) planes[1] = plane(second_);
        return {planes, format_, width_, height_, {}, {}, {}, {}};
    }

private:
    void Put(unsigned int x, unsigned int y, Rgb const& rgb) {
        auto const round = [](double value) { return static_cast<std::uint8_t>(value + 0.5); };
        double const r = rgb[0], g = rgb[1], b = rgb[2];
        std::array<std::uint8_t, 3> const yuv{round(16 + 0.257 * r + 0.504 * g + 0.098 * b),
                                              round(128 - 0.148 * r - 0.291 * g + 0.439 * b),
                                              round(128 + 0.439 * r - 0.368 * g - 0.071 * b)};
        std::uint8_t* const row = first_.data() + y * stride_;
        switch (format_) {
            case ColourFormat::Nv12:
                row[x] = yuv[0];
                std::copy_n(&yuv[1], 2, second_.data() + y / 2 * stride_ + x / 2 * 2);
                break;
            case ColourFormat::Grey8:
                row[x] = round(0.299 * r + 0.587 * g + 0.114 * b);
                break;
            case ColourFormat::Yuv24:
                std::copy_n(yuv.data(), 3, row + 3 * x);
                break;
            case ColourFormat::Bgr24:
                std::copy_n(Rgb{rgb[2], rgb[1], rgb[0]}.data(), 3, row + 3 * x);
                break;
            case ColourFormat::Rgb24:
                std::copy_n(rgb.data(), 3, row + 3 * x);
                break;
        }
    }

    ColourFormat format_;
    unsigned int width_, height_;
    std::size_t stride_;
    std::vector<std::uint8_t> first_, second_;
};

inline constexpr TestFrame::Rgb Red{230, 20, 20}, Green{20, 230, 20}, Blue{20, 20, 230};

}  // namespace qel::classifier
