#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <iosfwd>

#include "qel/algorithm/export.hpp"
#include "qel/geometry/dimension.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/time_point.hpp"
#include "qel/media/video/frame/plane.hpp"
#include "qel/media/video/frame/rotation.hpp"

namespace qel::media::video {

/// A video frame: up to four planes of pixels that it shares with others, and what is known about them.
///
/// T is void for pixels that may be written, void const for pixels that may only be read. The pixels belong to whoever
/// gave the two callbacks: ref is called when a frame starts sharing them, unref when it stops; both are set, or
/// neither. unref must not throw. A frame is used by one thread at a time; frames that share pixels may live on
/// different threads when the callbacks allow it, as those of an allocated frame do.
template <class T>
class FrameBase {
public:
    /// The number of planes of every frame; those that the colour format does not use are all zero.
    static constexpr std::size_t MaxPlanes = 4;

    using Planes = std::array<frame::PlaneBase<T>, MaxPlanes>;

    /// A frame without pixels: everything zero, no callbacks.
    FrameBase() noexcept = default;

    /// Wraps pixels that exist, and calls ref once when it is set.
    /// width, height: in pixels. Throws std::invalid_argument, calling neither, when only one callback is set.
    FrameBase(Planes const& planes, ColourFormat colourFormat, unsigned int width, unsigned int height,
              TimePoint timestamp, frame::Rotation rotation, std::function<void()> ref, std::function<void()> unref);
    FrameBase(Planes const& planes, ColourFormat colourFormat, geometry::Dimension<unsigned int, 2> size,
              TimePoint timestamp, frame::Rotation rotation, std::function<void()> ref, std::function<void()> unref);

    /// Allocates pixels, not cleared, rows padded to a multiple of 4 bytes, freed with the last frame that shares them.
    /// Throws std::invalid_argument for a colour format without a name, std::bad_alloc when there is no memory.
    FrameBase(ColourFormat colourFormat, unsigned int width, unsigned int height, TimePoint timestamp,
              frame::Rotation rotation);
    FrameBase(ColourFormat colourFormat, geometry::Dimension<unsigned int, 2> size, TimePoint timestamp,
              frame::Rotation rotation);

    /// Shares the pixels of other: copies every field, then calls ref once when it is set.
    FrameBase(FrameBase const& other);
    /// Takes over from other, which keeps its planes but no callbacks; calls neither.
    FrameBase(FrameBase&& other) noexcept;
    /// Exchanges everything with the argument, which releases the old contents when it dies.
    FrameBase& operator=(FrameBase other) noexcept;
    /// Calls unref once when it is set.
    ~FrameBase();

    /// Whether there is an image: a plane with pixels, and neither width nor height zero.
    explicit operator bool() const noexcept;

    /// Whether all fields but the callbacks are equal; the pixels are not compared.
    bool operator==(FrameBase const& other) const noexcept;

    Planes const& GetPlanes() const noexcept { return planes_; }
    /// Requires index < MaxPlanes; not checked.
    frame::PlaneBase<T> const& GetPlane(std::size_t index) const noexcept { return planes_[index]; }
    ColourFormat GetColourFormat() const noexcept { return colourFormat_; }
    geometry::Dimension<unsigned int, 2> const& GetSize() const noexcept { return size_; }
    unsigned int GetWidth() const noexcept { return size_.width; }
    unsigned int GetHeight() const noexcept { return size_.height; }
    TimePoint GetTimestamp() const noexcept { return timestamp_; }
    frame::Rotation GetRotation() const noexcept { return rotation_; }
    std::function<void()> const& GetRef() const noexcept { return ref_; }
    std::function<void()> const& GetUnref() const noexcept { return unref_; }

    /// The number of steps of a row-wise iteration: the height.
    std::size_t GetIteratorLength() const noexcept { return size_.height; }

private:
    template <class U>
    friend void swap(FrameBase<U>& left, FrameBase<U>& right) noexcept;

    void Swap(FrameBase& other) noexcept;

    Planes planes_{};
    ColourFormat colourFormat_{};
    geometry::Dimension<unsigned int, 2> size_{};
    TimePoint timestamp_{};
    frame::Rotation rotation_{};
    std::function<void()> ref_;
    std::function<void()> unref_;
};

/// Exchanges every field, callbacks included; calls neither callback.
template <class T>
void swap(FrameBase<T>& left, FrameBase<T>& right) noexcept {
    left.Swap(right);
}

/// Writes the frame for logs:
/// {"planes":"[P,P,P,P],"colour_format":F,"width":W,"height":H,"timestamp":T,"rotation":"R"}. The quote before the
/// planes is never closed: the settled form, kept. Throws std::out_of_range ("map::at") at the rotation when it has no
/// name.
template <class T>
std::ostream& operator<<(std::ostream& stream, FrameBase<T> const& frame);

extern template class QEL_ALGORITHM_EXPORT FrameBase<void>;
extern template class QEL_ALGORITHM_EXPORT FrameBase<void const>;
extern template QEL_ALGORITHM_EXPORT void swap(FrameBase<void>&, FrameBase<void>&) noexcept;
extern template QEL_ALGORITHM_EXPORT void swap(FrameBase<void const>&, FrameBase<void const>&) noexcept;
extern template QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream&, FrameBase<void> const&);
extern template QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream&, FrameBase<void const> const&);

}  // namespace qel::media::video
