#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <utility>
#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/geometry/dimension.hpp"
#include "qel/geometry/rectangle.hpp"

namespace qel::algorithm {

/// A binary image: one bit a pixel, packed into 32-bit words, row by row.
///
/// Pixel (x, y) is bit 31 - x % 32 of word y * GetStride() + x / 32: the first pixel of a word is its most significant
/// bit. Every row starts at a word; the bits after a row's last pixel are padding. A set bit is foreground.
/// A value argument sets when it is not zero and clears when it is. A regular value; one thread at a time.
class QEL_ALGORITHM_EXPORT BitMask {
public:
    using Size = geometry::Dimension<unsigned int, 2>;

    /// An empty mask: 0 x 0, no words.
    BitMask() = default;
    /// A mask of background, padding included.
    explicit BitMask(Size size) { Resize(size); }
    BitMask(BitMask const&) = default;
    /// Leaves the other mask empty.
    BitMask(BitMask&& other) noexcept
        : size_(std::exchange(other.size_, Size{})), data_(std::exchange(other.data_, {})) {}
    BitMask& operator=(BitMask other) noexcept {
        std::swap(size_, other.size_);
        data_.swap(other.data_);
        return *this;
    }
    ~BitMask() = default;

    Size const& GetSize() const noexcept { return size_; }
    /// Words a row: (width + 31) / 32 in 32-bit arithmetic.
    std::size_t GetStride() const noexcept { return (size_.width + 31U) / 32U; }
    /// The words, GetStride() times the height of them, row by row. Their number is the mask's own to change.
    std::vector<std::uint32_t>& GetData() noexcept { return data_; }
    std::vector<std::uint32_t> const& GetData() const noexcept { return data_; }
    /// Takes another size and clears every pixel; keeps its memory where that is large enough.
    void Resize(Size size);

    /// Sets or clears every word, padding included.
    void Fill(unsigned int value) noexcept;

    /// Sets or clears, in rows y0 to y1 - 1, every whole word that holds one of the columns x0 to x1 - 1.
    /// The bounds are cut to 0 and to width - 1 and height - 1, so the last row is never written. Requires columns
    /// left after that cut; without them the word of column x0 - 1 and whatever lies between it and the word of x0
    /// may be written, but nothing outside the mask's words ever is.
    void EraseRect(geometry::Rectangle<int> const& rect, unsigned int value) noexcept;
    /// The same between two corners in any order, compared as signed numbers.
    void EraseRect(geometry::Rectangle<unsigned int> const& rect, unsigned int value) noexcept;

    /// Adds the other mask's foreground, padding included, as the next two do.
    /// All three throw std::invalid_argument when the sizes differ ("BitMask dimensions must match") or, that tested
    /// first, when there is nothing to combine ("Empty BitMask"); this mask is then unchanged.
    void Union(BitMask const& other);
    /// Takes the other mask's foreground away.
    void Difference(BitMask const& other);
    /// Keeps only what is foreground in both.
    void Intersection(BitMask const& other);

    /// Same size and same words, padding included.
    friend bool operator==(BitMask const&, BitMask const&) = default;

private:
    Size size_;
    std::vector<std::uint32_t> data_;
};

/// Writes {"size":{"width":W,"height":H}}; never the pixels.
QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream& stream, BitMask const& mask);

}  // namespace qel::algorithm
