#include "picture.hpp"

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>

#include "qel/media/colour_format.hpp"

namespace qel::privacy_mask {
namespace {

using Frame = media::video::FrameBase<void>;

// YUV comes with video levels: 16 is black.
constexpr std::array<std::uint8_t, 3> Black{0, 0, 0}, BlackYuv{16, 128, 128}, NoColour{128, 128, 128};

[[noreturn]] void Refuse(Frame const& frame, std::string const& reason) {
    std::ostringstream text;
    text << "Cannot mask the frame " << frame << ": " << reason;
    throw std::invalid_argument(text.str());
}

Plane PlaneOf(Frame const& frame, std::size_t index, unsigned int width, unsigned int height, unsigned int bytes,
              std::array<std::uint8_t, 3> const& black) {
    auto const& plane = frame.GetPlane(index);
    auto const stride = static_cast<std::uint64_t>(std::abs(plane.GetStride()));
    std::uint64_t const rowBytes = std::uint64_t{width} * bytes;
    if (!plane || stride < rowBytes || plane.GetSize() < stride * (height - 1) + rowBytes) {
        Refuse(frame, "plane " + std::to_string(index) + " is smaller than the image");
    }
    return {static_cast<std::uint8_t*>(plane.GetBuffer()), plane.GetStride(), width, height, bytes, black};
}

}  // namespace

Picture ViewOf(Frame& frame) {
    if (!frame) Refuse(frame, "it has no image");
    unsigned int const width = frame.GetWidth(), height = frame.GetHeight();
    switch (frame.GetColourFormat()) {
        case media::ColourFormat::Grey8:
            return {PlaneOf(frame, 0, width, height, 1, Black), {}, false};
        case media::ColourFormat::Rgb24:
        case media::ColourFormat::Bgr24:
            return {PlaneOf(frame, 0, width, height, 3, Black), {}, false};
        case media::ColourFormat::Yuv24:
            return {PlaneOf(frame, 0, width, height, 3, BlackYuv), {}, false};
        case media::ColourFormat::Nv12:
            return {PlaneOf(frame, 0, width, height, 1, BlackYuv),
                    PlaneOf(frame, 1, width / 2 + width % 2, height / 2 + height % 2, 2, NoColour), true};
    }
    Refuse(frame, "its colour format is unknown");
}

}  // namespace qel::privacy_mask
