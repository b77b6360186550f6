#include "qel/media/video/frame.hpp"

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "media/video/allocate.hpp"

namespace qel::media::video {

template <class T>
FrameBase<T>::FrameBase(Planes const& planes, ColourFormat colourFormat, geometry::Dimension<unsigned int, 2> size,
                        TimePoint timestamp, frame::Rotation rotation, std::function<void()> ref,
                        std::function<void()> unref)
    : planes_(planes),
      colourFormat_(colourFormat),
      size_(size),
      timestamp_(timestamp),
      rotation_(rotation),
      ref_(std::move(ref)),
      unref_(std::move(unref)) {
    if (static_cast<bool>(ref_) != static_cast<bool>(unref_)) {
        throw std::invalid_argument("Must provide both a reference and unreference function, or neither");
    }
    if (ref_) ref_();
}

template <class T>
FrameBase<T>::FrameBase(Planes const& planes, ColourFormat colourFormat, unsigned int width, unsigned int height,
                        TimePoint timestamp, frame::Rotation rotation, std::function<void()> ref,
                        std::function<void()> unref)
    : FrameBase(planes, colourFormat, {width, height}, timestamp, rotation, std::move(ref), std::move(unref)) {}

template <class T>
FrameBase<T>::FrameBase(ColourFormat colourFormat, geometry::Dimension<unsigned int, 2> size, TimePoint timestamp,
                        frame::Rotation rotation)
    : FrameBase(Allocate<T>(colourFormat, size, timestamp, rotation)) {}

template <class T>
FrameBase<T>::FrameBase(ColourFormat colourFormat, unsigned int width, unsigned int height, TimePoint timestamp,
                        frame::Rotation rotation)
    : FrameBase(Allocate<T>(colourFormat, {width, height}, timestamp, rotation)) {}

template <class T>
FrameBase<T>::FrameBase(FrameBase const& other)
    : planes_(other.planes_),
      colourFormat_(other.colourFormat_),
      size_(other.size_),
      timestamp_(other.timestamp_),
      rotation_(other.rotation_),
      ref_(other.ref_),
      unref_(other.unref_) {
    if (ref_) ref_();
}

template <class T>
FrameBase<T>::FrameBase(FrameBase&& other) noexcept
    : planes_(other.planes_),
      colourFormat_(other.colourFormat_),
      size_(other.size_),
      timestamp_(other.timestamp_),
      rotation_(other.rotation_) {
    // std::function promises nothing about a moved-from source; swapping leaves it empty.
    ref_.swap(other.ref_);
    unref_.swap(other.unref_);
}

template <class T>
FrameBase<T>& FrameBase<T>::operator=(FrameBase other) noexcept {
    Swap(other);
    return *this;
}

template <class T>
FrameBase<T>::~FrameBase() {
    if (unref_) unref_();
}

template <class T>
FrameBase<T>::operator bool() const noexcept {
    bool const hasPixels = std::any_of(planes_.begin(), planes_.end(), [](auto const& plane) { return bool(plane); });
    return hasPixels && size_.width != 0 && size_.height != 0;
}

template <class T>
bool FrameBase<T>::operator==(FrameBase const& other) const noexcept {
    return planes_ == other.planes_ && colourFormat_ == other.colourFormat_ && size_ == other.size_ &&
           timestamp_ == other.timestamp_ && rotation_ == other.rotation_;
}

template <class T>
void FrameBase<T>::Swap(FrameBase& other) noexcept {
    std::swap(planes_, other.planes_);
    std::swap(colourFormat_, other.colourFormat_);
    std::swap(size_, other.size_);
    std::swap(timestamp_, other.timestamp_);
    std::swap(rotation_, other.rotation_);
    ref_.swap(other.ref_);
    unref_.swap(other.unref_);
}

template <class T>
std::ostream& operator<<(std::ostream& stream, FrameBase<T> const& videoFrame) {
    stream << "{\"planes\":\"[";
    char const* separator = "";
    for (auto const& plane : videoFrame.GetPlanes()) {
        stream << separator << plane;
        separator = ",";
    }
    stream << "],\"colour_format\":" << videoFrame.GetColourFormat();
    stream << ",\"width\":" << videoFrame.GetWidth() << ",\"height\":" << videoFrame.GetHeight() << ",\"timestamp\":";
    media::operator<<(stream, videoFrame.GetTimestamp());
    auto const& names = type::Strings<frame::Rotation>::GetMap();
    return stream << ",\"rotation\":\"" << names.at(static_cast<std::uint64_t>(videoFrame.GetRotation())) << "\"}";
}

template class FrameBase<void>;
template class FrameBase<void const>;
template void swap(FrameBase<void>&, FrameBase<void>&) noexcept;
template void swap(FrameBase<void const>&, FrameBase<void const>&) noexcept;
template std::ostream& operator<<(std::ostream&, FrameBase<void> const&);
template std::ostream& operator<<(std::ostream&, FrameBase<void const> const&);

}  // namespace qel::media::video
