#include "picture_reader.hpp"

#include <algorithm>
#include <cstddef>

#include "qel/media/colour_format.hpp"

namespace qel::motion {
namespace {

using Frame = media::video::FrameBase<void const>;

struct Yuv {
    int y, u, v;
};

// Fixed point of 8 fraction bits, full range; the offsets round to the nearest level.
Yuv FromRgb(int red, int green, int blue) {
    return {(77 * red + 150 * green + 29 * blue + 128) >> 8, ((-43 * red - 85 * green + 128 * blue + 127) >> 8) + 128,
            ((128 * red - 107 * green - 21 * blue + 127) >> 8) + 128};
}

}  // namespace

Picture PictureReader::Read(Frame const& frame) {
    plugin::FrameCheck const check("Cannot look for motion in the frame", frame);
    std::uint64_t const width = frame.GetWidth(), height = frame.GetHeight();
    Picture picture;
    picture.width = frame.GetWidth();
    picture.height = frame.GetHeight();
    switch (frame.GetColourFormat()) {
        case media::ColourFormat::Nv12:
            picture.chroma = check.GetPlane(1, (width + 1) / 2 * 2, (height + 1) / 2);
            picture.chromaStride = frame.GetPlane(1).GetStride();
            [[fallthrough]];
        case media::ColourFormat::Grey8:
            picture.luma = check.GetPlane(0, width, height);
            picture.lumaStride = frame.GetPlane(0).GetStride();
            return picture;
        case media::ColourFormat::Yuv24:
            return ReadPacked(check, frame, [](std::uint8_t const* p) { return Yuv{p[0], p[1], p[2]}; });
        case media::ColourFormat::Rgb24:
            return ReadPacked(check, frame, [](std::uint8_t const* p) { return FromRgb(p[0], p[1], p[2]); });
        case media::ColourFormat::Bgr24:
            return ReadPacked(check, frame, [](std::uint8_t const* p) { return FromRgb(p[2], p[1], p[0]); });
    }
    check.RefuseFormat();
}

template <class Convert>
Picture PictureReader::ReadPacked(Check const& check, Frame const& frame, Convert convert) {
    std::size_t const width = frame.GetWidth(), height = frame.GetHeight(), evenWidth = (width + 1) / 2 * 2;
    std::uint8_t const* const pixels = check.GetPlane(0, 3 * std::uint64_t{width}, height);
    std::ptrdiff_t const stride = frame.GetPlane(0).GetStride();
    luma_.resize(width * height);
    chroma_.resize(evenWidth * ((height + 1) / 2));
    for (std::size_t y = 0; y < height; y += 2) {
        sums_.assign(evenWidth, 0);
        // The last row of an odd height, and the last column of an odd width, stand for their missing neighbours.
        for (std::size_t const row : {y, std::min(y + 1, height - 1)}) {
            std::uint8_t const* const from = pixels + static_cast<std::ptrdiff_t>(row) * stride;
            for (std::size_t x = 0; x < evenWidth; ++x) {
                std::size_t const column = std::min(x, width - 1);
                Yuv const yuv = convert(from + 3 * column);
                luma_[row * width + column] = static_cast<std::uint8_t>(yuv.y);
                sums_[x / 2 * 2] = static_cast<std::uint16_t>(sums_[x / 2 * 2] + yuv.u);
                sums_[x / 2 * 2 + 1] = static_cast<std::uint16_t>(sums_[x / 2 * 2 + 1] + yuv.v);
            }
        }
        std::transform(sums_.begin(), sums_.end(), chroma_.begin() + static_cast<std::ptrdiff_t>(y / 2 * evenWidth),
                       [](std::uint16_t sum) { return static_cast<std::uint8_t>((sum + 2) / 4); });
    }
    return {luma_.data(),     static_cast<std::ptrdiff_t>(width),
            chroma_.data(),   static_cast<std::ptrdiff_t>(evenWidth),
            frame.GetWidth(), frame.GetHeight()};
}

}  // namespace qel::motion
