#include "crop.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "common/frame_check.hpp"
#include "common/from_yuv.hpp"
#include "qel/media/colour_format.hpp"

namespace qel::classifier {
namespace {

using Frame = Cropper::Frame;
using Box = Cropper::Box;
using inference::ChannelOrder;
using inference::Picture;
using media::ColourFormat;

void Check(Frame const& frame) {
    plugin::FrameCheck const check("Cannot classify what is in the frame", frame);
    std::uint64_t const width = frame.GetWidth(), height = frame.GetHeight();
    switch (frame.GetColourFormat()) {
        case ColourFormat::Nv12:
            (void)check.GetPlane(1, (width + 1) / 2 * 2, (height + 1) / 2);
            [[fallthrough]];
        case ColourFormat::Grey8:
            (void)check.GetPlane(0, width, height);
            return;
        case ColourFormat::Yuv24:
        case ColourFormat::Rgb24:
        case ColourFormat::Bgr24:
            (void)check.GetPlane(0, 3 * width, height);
            return;
    }
    check.RefuseFormat();
}

std::uint8_t const* RowOf(Frame const& frame, std::size_t plane, std::size_t y) {
    return static_cast<std::uint8_t const*>(frame.GetPlane(plane).GetBuffer()) +
           static_cast<std::ptrdiff_t>(y) * frame.GetPlane(plane).GetStride();
}

/// The box with its margin, within the frame; without pixels where they do not meet.
Box Cut(Box const& box, double margin, Frame const& frame) {
    if (box.x1 <= box.x0 || box.y1 <= box.y0) return {};
    auto const side = [margin](unsigned int first, unsigned int end, unsigned int most) {
        double const more = std::round(margin * (end - first));
        return std::pair(static_cast<unsigned int>(std::max(0.0, first - more)),
                         static_cast<unsigned int>(std::min<double>(most, end + more)));
    };
    auto const [x0, x1] = side(box.x0, box.x1, frame.GetWidth());
    auto const [y0, y1] = side(box.y0, box.y1, frame.GetHeight());
    if (x1 <= x0 || y1 <= y0) return {};
    return {x0, y0, x1, y1};
}

void PutRgb(int y, int u, int v, std::uint8_t* target) {
    auto const rgb = plugin::FromYuv(y, u, v);
    target[0] = rgb.red;
    target[1] = rgb.green;
    target[2] = rgb.blue;
}

}  // namespace

std::vector<Picture> const& Cropper::Crop(Frame const& frame, std::vector<Box> const& boxes, double margin) {
    Check(frame);
    ColourFormat const format = frame.GetColourFormat();
    bool const isYuv = format == ColourFormat::Nv12 || format == ColourFormat::Yuv24;
    unsigned int const channels = format == ColourFormat::Grey8 ? 1 : 3;
    ChannelOrder const order = format == ColourFormat::Bgr24 ? ChannelOrder::Bgr : ChannelOrder::Rgb;
    pictures_.clear();
    buffers_.resize(std::max(buffers_.size(), isYuv ? boxes.size() : 0));
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        Box const box = Cut(boxes[i], margin, frame);
        unsigned int const width = box.x1 - box.x0, height = box.y1 - box.y0;
        if (isYuv) {
            Convert(frame, box, buffers_[i]);
            pictures_.push_back({buffers_[i].data(), std::ptrdiff_t{3} * width, width, height, channels, order});
        } else {
            auto const* const first = RowOf(frame, 0, box.y0) + std::size_t{box.x0} * channels;
            pictures_.push_back({first, frame.GetPlane(0).GetStride(), width, height, channels, order});
        }
    }
    return pictures_;
}

void Cropper::Convert(Frame const& frame, Box const& box, std::vector<std::uint8_t>& pixels) const {
    std::size_t const width = box.x1 - box.x0;
    pixels.resize(3 * width * (box.y1 - box.y0));
    std::uint8_t* target = pixels.data();
    for (std::size_t y = box.y0; y < box.y1; ++y) {
        std::uint8_t const* const row = RowOf(frame, 0, y);
        if (frame.GetColourFormat() == ColourFormat::Yuv24) {
            for (std::size_t x = box.x0; x < box.x1; ++x, target += 3) {
                PutRgb(row[3 * x], row[3 * x + 1], row[3 * x + 2], target);
            }
        } else {
            std::uint8_t const* const chroma = RowOf(frame, 1, y / 2);
            for (std::size_t x = box.x0; x < box.x1; ++x, target += 3) {
                PutRgb(row[x], chroma[x / 2 * 2], chroma[x / 2 * 2 + 1], target);
            }
        }
    }
}

}  // namespace qel::classifier
