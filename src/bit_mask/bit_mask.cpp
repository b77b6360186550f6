#include "qel/algorithm/bit_mask.hpp"

#include <algorithm>
#include <ostream>
#include <stdexcept>

#include "bit_mask/clip.hpp"
#include "bit_mask/combine_kernels.hpp"

namespace qel::algorithm {
namespace {

bool IsEmpty(BitMask const& mask) {
    return mask.GetData().empty() || mask.GetSize().width == 0 || mask.GetSize().height == 0;
}

/// Combines word by word. A store that its owner made shorter than its size bounds the loop.
void Combine(BitMask& mask, BitMask const& other, bit_mask::CombineKernel kernel) {
    if (mask.GetSize() != other.GetSize()) throw std::invalid_argument("BitMask dimensions must match");
    if (IsEmpty(mask) || IsEmpty(other)) throw std::invalid_argument("Empty BitMask");
    kernel(mask.GetData().data(), other.GetData().data(), std::min(mask.GetData().size(), other.GetData().size()));
}

}  // namespace

void BitMask::Resize(Size size) {
    std::size_t const stride = (size.width + 31U) / 32U;
    data_.assign(stride * size.height, 0U);
    size_ = size;
}

void BitMask::Fill(unsigned int value) noexcept { std::fill(data_.begin(), data_.end(), value != 0 ? ~0U : 0U); }

void BitMask::EraseRect(geometry::Rectangle<int> const& rect, unsigned int value) noexcept {
    // Word-granular, and one short of the last row and column: kept, callers count on both.
    bit_mask::Interval const rows = bit_mask::Clip(rect.y0, rect.y1, size_.height);
    bit_mask::Interval const columns = bit_mask::Clip(rect.x0, rect.x1, size_.width);
    // In unsigned arithmetic: without columns at 0 the span would leave the store; it ends where the store ends.
    std::size_t const first = static_cast<unsigned int>(columns.begin) / 32U;
    std::size_t const end = (static_cast<unsigned int>(columns.end) - 1U) / 32U + 1U;
    std::uint32_t const fill = value != 0 ? ~0U : 0U;
    std::size_t const stride = GetStride();
    for (int y = rows.begin; y < rows.end; ++y) {
        std::size_t const row = static_cast<unsigned int>(y) * stride;
        std::size_t const stop = std::min(row + end, data_.size());
        for (std::size_t i = row + first; i < stop; ++i) data_[i] = fill;
    }
}

void BitMask::EraseRect(geometry::Rectangle<unsigned int> const& rect, unsigned int value) noexcept {
    geometry::Rectangle<int> const corners{static_cast<int>(rect.x0), static_cast<int>(rect.y0),
                                           static_cast<int>(rect.x1), static_cast<int>(rect.y1)};
    EraseRect(geometry::Rectangle<int>{std::min(corners.x0, corners.x1), std::min(corners.y0, corners.y1),
                                       std::max(corners.x0, corners.x1), std::max(corners.y0, corners.y1)},
              value);
}

void BitMask::Union(BitMask const& other) { Combine(*this, other, bit_mask::GetCombineKernels().unite); }

void BitMask::Difference(BitMask const& other) { Combine(*this, other, bit_mask::GetCombineKernels().subtract); }

void BitMask::Intersection(BitMask const& other) { Combine(*this, other, bit_mask::GetCombineKernels().intersect); }

std::ostream& operator<<(std::ostream& stream, BitMask const& mask) {
    return stream << "{\"size\":" << mask.GetSize() << '}';
}

}  // namespace qel::algorithm
