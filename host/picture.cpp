// Method: each format has a function that turns one row into words. YUV goes through integers scaled by 2^16.
#include "picture.hpp"

#include <algorithm>

#include "error.hpp"

namespace qel::host {
namespace {

using Frame = media::video::FrameBase<void const>;
using media::ColourFormat;

std::uint32_t Pack(unsigned int red, unsigned int green, unsigned int blue) { return red << 16U | green << 8U | blue; }

std::uint32_t FromYuv(int y, int u, int v) {
    constexpr int Half = 1 << 15;
    int const luma = 76309 * (y - 16) + Half;
    auto const level = [](int value) { return static_cast<unsigned int>(std::clamp(value >> 16, 0, 255)); };
    return Pack(level(luma + 104597 * (v - 128)), level(luma - 25674 * (u - 128) - 53278 * (v - 128)),
                level(luma + 132201 * (u - 128)));
}

struct PlaneRows {
    std::uint8_t const* first;
    std::int64_t stride;

    std::uint8_t const* Row(std::size_t y) const { return first + static_cast<std::ptrdiff_t>(y) * stride; }
};

PlaneRows RowsOf(Frame const& frame, std::size_t index, std::size_t rows, std::size_t rowBytes) {
    auto const& plane = frame.GetPlane(index);
    bool const holds = plane && plane.GetStride() >= static_cast<std::int64_t>(rowBytes) &&
                       plane.GetSize() >= static_cast<std::uint64_t>(plane.GetStride()) * (rows - 1) + rowBytes;
    if (!holds) throw Error("a frame's planes are smaller than its size");
    return {static_cast<std::uint8_t const*>(plane.GetBuffer()), plane.GetStride()};
}

template <class PixelAt>
void FillRow(std::uint32_t* out, std::size_t width, PixelAt const& pixelAt) {
    for (std::size_t x = 0; x < width; ++x) out[x] = pixelAt(x);
}

void ConvertPacked(Frame const& frame, Picture& picture) {
    std::size_t const width = picture.size.width;
    PlaneRows const rows = RowsOf(frame, 0, picture.size.height, 3 * width);
    for (std::size_t y = 0; y < picture.size.height; ++y) {
        std::uint8_t const* const in = rows.Row(y);
        std::uint32_t* const out = picture.pixels.data() + y * width;
        switch (frame.GetColourFormat()) {
            case ColourFormat::Rgb24:
                FillRow(out, width, [in](std::size_t x) { return Pack(in[3 * x], in[3 * x + 1], in[3 * x + 2]); });
                break;
            case ColourFormat::Bgr24:
                FillRow(out, width, [in](std::size_t x) { return Pack(in[3 * x + 2], in[3 * x + 1], in[3 * x]); });
                break;
            default:
                FillRow(out, width, [in](std::size_t x) { return FromYuv(in[3 * x], in[3 * x + 1], in[3 * x + 2]); });
        }
    }
}

void ConvertGrey(Frame const& frame, Picture& picture) {
    std::size_t const width = picture.size.width;
    PlaneRows const rows = RowsOf(frame, 0, picture.size.height, width);
    for (std::size_t y = 0; y < picture.size.height; ++y) {
        std::uint8_t const* const in = rows.Row(y);
        FillRow(picture.pixels.data() + y * width, width, [in](std::size_t x) { return Pack(in[x], in[x], in[x]); });
    }
}

void ConvertNv12(Frame const& frame, Picture& picture) {
    std::size_t const width = picture.size.width;
    std::size_t const height = picture.size.height;
    PlaneRows const luma = RowsOf(frame, 0, height, width);
    PlaneRows const chroma = RowsOf(frame, 1, (height + 1) / 2, (width + 1) / 2 * 2);
    for (std::size_t y = 0; y < height; ++y) {
        std::uint8_t const* const in = luma.Row(y);
        std::uint8_t const* const pairs = chroma.Row(y / 2);
        FillRow(picture.pixels.data() + y * width, width, [in, pairs](std::size_t x) {
            std::size_t const pair = x / 2 * 2;
            return FromYuv(in[x], pairs[pair], pairs[pair + 1]);
        });
    }
}

}  // namespace

Picture ToPicture(Frame const& frame) {
    Picture picture(frame.GetSize());
    if (picture.pixels.empty()) return picture;
    switch (frame.GetColourFormat()) {
        case ColourFormat::Grey8:
            ConvertGrey(frame, picture);
            break;
        case ColourFormat::Rgb24:
        case ColourFormat::Bgr24:
        case ColourFormat::Yuv24:
            ConvertPacked(frame, picture);
            break;
        case ColourFormat::Nv12:
            ConvertNv12(frame, picture);
            break;
        default:
            throw Error("a frame's colour format is unknown");
    }
    return picture;
}

}  // namespace qel::host
