#include "picture.hpp"

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>

namespace qel::colour_classifier {
namespace {

using Frame = media::video::FrameBase<void const>;
using media::ColourFormat;

[[noreturn]] void Refuse(Frame const& frame, std::string const& reason) {
    std::ostringstream text;
    text << "Cannot name the colours in the frame " << frame << ": " << reason;
    throw std::invalid_argument(text.str());
}

/// The first byte of a plane of rows x rowBytes bytes, checked to lie within it.
std::uint8_t const* PlaneOf(Frame const& frame, std::size_t index, std::uint64_t rowBytes, std::uint64_t rows) {
    auto const& plane = frame.GetPlane(index);
    auto const stride = static_cast<std::uint64_t>(std::abs(plane.GetStride()));
    if (!plane || stride < rowBytes || plane.GetSize() < stride * (rows - 1) + rowBytes) {
        Refuse(frame, "plane " + std::to_string(index) + " is smaller than the image");
    }
    return static_cast<std::uint8_t const*>(plane.GetBuffer());
}

}  // namespace

Picture ViewOf(Frame const& frame) {
    if (!frame) Refuse(frame, "it has no image");
    std::uint64_t const width = frame.GetWidth(), height = frame.GetHeight();
    ColourFormat const format = frame.GetColourFormat();
    switch (format) {
        case ColourFormat::Nv12:
            return {format, PlaneOf(frame, 0, width, height), frame.GetPlane(0).GetStride(),
                    PlaneOf(frame, 1, (width + 1) / 2 * 2, (height + 1) / 2), frame.GetPlane(1).GetStride()};
        case ColourFormat::Yuv24:
        case ColourFormat::Rgb24:
        case ColourFormat::Bgr24:
            return {format, PlaneOf(frame, 0, 3 * width, height), frame.GetPlane(0).GetStride(), nullptr, 0};
        case ColourFormat::Grey8:
            Refuse(frame, "it has none");
    }
    Refuse(frame, "its colour format is unknown");
}

}  // namespace qel::colour_classifier
