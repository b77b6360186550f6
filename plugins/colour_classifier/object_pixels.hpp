#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/rectangle.hpp"

namespace qel::colour_classifier {

/// The pixels of one object, a bit each: bit 31 - x % 32 of word x / 32 of a row is column x of the box. Keeps its
/// buffers.
class ObjectPixels {
public:
    using Box = geometry::Rectangle<unsigned int>;

    /// Takes the foreground within the box, without its rim: as often as rim says, the pixels that do not have all
    /// eight neighbours are left out, as long as a third of all pixels stay. Requires a box within the mask.
    void Take(algorithm::BitMask const& foreground, Box const& box, unsigned int rim);
    /// Takes the ellipse that touches all four sides of the box.
    void TakeEllipse(Box const& box);

    std::size_t GetCount() const noexcept { return count_; }
    std::size_t GetRows() const noexcept { return rows_; }
    std::size_t GetStride() const noexcept { return stride_; }
    std::uint32_t const* GetRow(std::size_t y) const noexcept { return words_.data() + y * stride_; }

private:
    void Resize(Box const& box);

    std::size_t rows_ = 0;
    std::size_t stride_ = 0;
    std::size_t count_ = 0;
    std::vector<std::uint32_t> words_;
    std::vector<std::uint32_t> scratch_;
};

}  // namespace qel::colour_classifier
