#include "picture.hpp"

#include <cstdint>

#include "common/frame_check.hpp"

namespace qel::colour_classifier {
using Frame = media::video::FrameBase<void const>;
using media::ColourFormat;

Picture ViewOf(Frame const& frame) {
    plugin::FrameCheck const check("Cannot name the colours in the frame", frame);
    std::uint64_t const width = frame.GetWidth(), height = frame.GetHeight();
    ColourFormat const format = frame.GetColourFormat();
    switch (format) {
        case ColourFormat::Nv12:
            return {format, check.GetPlane(0, width, height), frame.GetPlane(0).GetStride(),
                    check.GetPlane(1, (width + 1) / 2 * 2, (height + 1) / 2), frame.GetPlane(1).GetStride()};
        case ColourFormat::Yuv24:
        case ColourFormat::Rgb24:
        case ColourFormat::Bgr24:
            return {format, check.GetPlane(0, 3 * width, height), frame.GetPlane(0).GetStride(), nullptr, 0};
        case ColourFormat::Grey8:
            check.Refuse("it has none");
    }
    check.RefuseFormat();
}

}  // namespace qel::colour_classifier
