#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "qel/media/video/frame.hpp"

namespace qel::plugin {

/// Looks whether the planes of a frame hold what its format and size promise, before anybody touches a pixel.
/// T: of the frame, void or void const. The frame outlives the check.
template <class T>
class FrameCheck {
public:
    using Frame = media::video::FrameBase<T>;
    using Byte = std::conditional_t<std::is_const_v<T>, std::uint8_t const, std::uint8_t>;

    /// task: what cannot be done with a frame that is refused, as "Cannot mask the frame". Throws as Refuse for a frame
    /// without an image.
    FrameCheck(char const* task, Frame const& frame) : task_(task), frame_(frame) {
        if (!frame) Refuse("it has no image");
    }

    /// Throws std::invalid_argument: "TASK {...}: REASON".
    [[noreturn]] void Refuse(std::string const& reason) const {
        std::ostringstream text;
        text << task_ << ' ' << frame_ << ": " << reason;
        throw std::invalid_argument(text.str());
    }
    /// Throws the same: the frame is of no format that has a name.
    [[noreturn]] void RefuseFormat() const { Refuse("its colour format is unknown"); }

    /// The first byte of the first row of a plane that is to have rows x rowBytes bytes. Throws as Refuse when its
    /// stride, of either sign, or its size is too small for that. Requires rows > 0; not checked.
    Byte* GetPlane(std::size_t index, std::uint64_t rowBytes, std::uint64_t rows) const {
        auto const& plane = frame_.GetPlane(index);
        auto const stride = static_cast<std::uint64_t>(std::abs(plane.GetStride()));
        if (!plane || stride < rowBytes || plane.GetSize() < stride * (rows - 1) + rowBytes) {
            Refuse("plane " + std::to_string(index) + " is smaller than the image");
        }
        return static_cast<Byte*>(plane.GetBuffer());
    }

private:
    char const* task_;
    Frame const& frame_;
};

}  // namespace qel::plugin
