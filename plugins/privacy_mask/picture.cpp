#include "picture.hpp"

#include "common/frame_check.hpp"
#include "qel/media/colour_format.hpp"

namespace qel::privacy_mask {
namespace {

using Frame = media::video::FrameBase<void>;

// YUV comes with video levels: 16 is black.
constexpr std::array<std::uint8_t, 3> Black{0, 0, 0}, BlackYuv{16, 128, 128}, NoColour{128, 128, 128};

/// Finds the planes of one frame.
class PlaneFinder {
public:
    explicit PlaneFinder(Frame const& frame) : check_("Cannot mask the frame", frame), frame_(frame) {}

    Plane Find(std::size_t index, unsigned int width, unsigned int height, unsigned int bytes,
               std::array<std::uint8_t, 3> const& black) const {
        auto* const first = check_.GetPlane(index, std::uint64_t{width} * bytes, height);
        return {first, frame_.GetPlane(index).GetStride(), width, height, bytes, black};
    }
    [[noreturn]] void RefuseFormat() const { check_.RefuseFormat(); }

private:
    plugin::FrameCheck<void> check_;
    Frame const& frame_;
};

}  // namespace

Picture ViewOf(Frame& frame) {
    PlaneFinder const planes(frame);
    unsigned int const width = frame.GetWidth(), height = frame.GetHeight();
    switch (frame.GetColourFormat()) {
        case media::ColourFormat::Grey8:
            return {planes.Find(0, width, height, 1, Black), {}, false};
        case media::ColourFormat::Rgb24:
        case media::ColourFormat::Bgr24:
            return {planes.Find(0, width, height, 3, Black), {}, false};
        case media::ColourFormat::Yuv24:
            return {planes.Find(0, width, height, 3, BlackYuv), {}, false};
        case media::ColourFormat::Nv12:
            return {planes.Find(0, width, height, 1, BlackYuv),
                    planes.Find(1, width / 2 + width % 2, height / 2 + height % 2, 2, NoColour), true};
    }
    planes.RefuseFormat();
}

}  // namespace qel::privacy_mask
