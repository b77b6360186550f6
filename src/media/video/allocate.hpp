#pragma once

// Allocation of frames: one heap block holds the reference count and all planes, back to back.
//
//   block                        block + 16        + size of plane 0
//   | count (32 bits) | unused | plane 0          | plane 1 (Nv12)  |

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

#include "qel/media/video/frame.hpp"

namespace qel::media::video {
namespace detail {

constexpr std::uint64_t RoundUp(std::uint64_t value, std::uint64_t multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

/// How a plane is laid out: bytes from row to row, number of rows.
struct PlaneLayout {
    std::uint64_t stride;
    std::uint64_t rows;
};

/// How a frame is laid out: the number of planes in use, and those planes.
struct Layout {
    std::size_t count;
    std::array<PlaneLayout, 2> planes;
};

/// The layout of a frame; throws std::invalid_argument for a value that is no colour format.
constexpr Layout GetLayout(ColourFormat colourFormat, geometry::Dimension<unsigned int, 2> size) {
    std::uint64_t const width = size.width, height = size.height;
    PlaneLayout const oneByte = {RoundUp(width, 4), height};
    PlaneLayout const threeBytes = {RoundUp(3 * width, 4), height};
    PlaneLayout const pairsForTwoByTwo = {RoundUp(RoundUp(width, 2), 4), (height + 1) / 2};
    switch (colourFormat) {
        case ColourFormat::Grey8:
            return {1, {oneByte}};
        case ColourFormat::Rgb24:
            return {1, {threeBytes}};
        case ColourFormat::Bgr24:
            return {1, {threeBytes}};
        case ColourFormat::Yuv24:
            return {1, {threeBytes}};
        case ColourFormat::Nv12:
            return {2, {oneByte, pairsForTwoByTwo}};
    }
    throw std::invalid_argument("Unsupported colour format");
}

// The largest frames need more than 64 bits can count: no memory holds them either.
inline std::uint64_t Multiply(std::uint64_t left, std::uint64_t right) {
    std::uint64_t product = 0;
    if (__builtin_mul_overflow(left, right, &product)) throw std::bad_alloc();
    return product;
}

inline std::uint64_t Add(std::uint64_t left, std::uint64_t right) {
    std::uint64_t sum = 0;
    if (__builtin_add_overflow(left, right, &sum)) throw std::bad_alloc();
    return sum;
}

/// The start of a block; the planes follow it.
struct alignas(16) Header {
    std::atomic<std::uint32_t> references = 0;
};
static_assert(sizeof(Header) == 16 && std::atomic<std::uint32_t>::is_always_lock_free);

inline void Free(Header* header) noexcept {
    header->~Header();
    ::operator delete(header, std::align_val_t(alignof(Header)));
}

inline void Ref(Header* header) noexcept { header->references.fetch_add(1, std::memory_order_relaxed); }

// Releasing orders this frame's accesses before the last one's free; acquiring makes the last one wait for them.
inline void Unref(Header* header) noexcept {
    if (header->references.fetch_sub(1, std::memory_order_acq_rel) == 1) Free(header);
}

}  // namespace detail

/// A frame with pixels of its own, not cleared, which live until the last frame that shares them is gone.
/// size: in pixels. Throws std::invalid_argument for a value that is no colour format, std::bad_alloc without memory.
template <class T>
FrameBase<T> Allocate(ColourFormat colourFormat, geometry::Dimension<unsigned int, 2> size, TimePoint timestamp,
                      frame::Rotation rotation) {
    detail::Layout const layout = detail::GetLayout(colourFormat, size);
    std::uint64_t blockSize = sizeof(detail::Header);
    for (std::size_t i = 0; i < layout.count; ++i) {
        blockSize = detail::Add(blockSize, detail::Multiply(layout.planes[i].stride, layout.planes[i].rows));
    }

    void* const memory = ::operator new(blockSize, std::align_val_t(alignof(detail::Header)), std::nothrow);
    if (memory == nullptr) throw std::bad_alloc();
    std::unique_ptr<detail::Header, decltype(&detail::Free)> block(new (memory) detail::Header, &detail::Free);
    detail::Header* const header = block.get();

    std::byte* next = static_cast<std::byte*>(memory) + sizeof(detail::Header);
    typename FrameBase<T>::Planes planes;
    for (std::size_t i = 0; i < layout.count; ++i) {
        auto const [stride, rows] = layout.planes[i];
        planes[i] = frame::PlaneBase<T>(stride * rows, next, static_cast<std::int64_t>(stride));
        next += stride * rows;
    }
    FrameBase<T> allocated(
        planes, colourFormat, size, timestamp, rotation, [header] { detail::Ref(header); },
        [header] { detail::Unref(header); });
    static_cast<void>(block.release());  // owned by the count from here on
    return allocated;
}

}  // namespace qel::media::video
