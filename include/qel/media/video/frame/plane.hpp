#pragma once

#include <cstdint>
#include <iosfwd>
#include <utility>

#include "qel/algorithm/export.hpp"

namespace qel::media::video::frame {

/// One plane of a frame: a view of pixel rows that somebody else owns.
///
/// T is void for pixels that may be written, void const for those only read. Three fields; one thread at a time.
template <class T>
class PlaneBase {
public:
    /// The unused plane: all fields zero.
    PlaneBase() noexcept = default;
    /// size: bytes in the plane; buffer: first byte of the first row; stride: bytes from one row's start to the next's.
    PlaneBase(std::uint64_t size, T* buffer, std::int64_t stride) noexcept
        : size_(size), buffer_(buffer), stride_(stride) {}
    PlaneBase(PlaneBase const& other) noexcept = default;
    PlaneBase& operator=(PlaneBase other) noexcept {
        Swap(other);
        return *this;
    }
    ~PlaneBase() = default;

    /// Whether there are pixels: a size other than zero and a buffer; the stride is not looked at.
    explicit operator bool() const noexcept { return size_ != 0 && buffer_ != nullptr; }

    /// Whether all three fields are equal; the pixels are not compared.
    bool operator==(PlaneBase const& other) const noexcept = default;

    T* GetBuffer() const noexcept { return buffer_; }
    std::uint64_t GetSize() const noexcept { return size_; }
    std::int64_t GetStride() const noexcept { return stride_; }

private:
    template <class U>
    friend void swap(PlaneBase<U>& left, PlaneBase<U>& right) noexcept;

    void Swap(PlaneBase& other) noexcept {
        std::swap(size_, other.size_);
        std::swap(buffer_, other.buffer_);
        std::swap(stride_, other.stride_);
    }

    std::uint64_t size_ = 0;
    T* buffer_ = nullptr;
    std::int64_t stride_ = 0;
};

/// Exchanges the three fields.
template <class T>
void swap(PlaneBase<T>& left, PlaneBase<T>& right) noexcept {
    left.Swap(right);
}

/// Writes {"size":S,"buffer":"P,"stride":R} with P as the stream prints pointers.
/// The quote before the buffer is never closed: the settled form, kept.
template <class T>
std::ostream& operator<<(std::ostream& stream, PlaneBase<T> const& plane);

extern template class QEL_ALGORITHM_EXPORT PlaneBase<void>;
extern template class QEL_ALGORITHM_EXPORT PlaneBase<void const>;
extern template QEL_ALGORITHM_EXPORT void swap(PlaneBase<void>&, PlaneBase<void>&) noexcept;
extern template QEL_ALGORITHM_EXPORT void swap(PlaneBase<void const>&, PlaneBase<void const>&) noexcept;
extern template QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream&, PlaneBase<void> const&);
extern template QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream&, PlaneBase<void const> const&);

}  // namespace qel::media::video::frame
