// The foreground of the box is moved to the left border of words of its own, so that neither neighbours in the picture
// nor the bits outside the box count; beyond it is background, as the erosion takes it.
#include "object_pixels.hpp"

#include <bit>

#include "qel/algorithm/bit_mask/erode.hpp"

namespace qel::colour_classifier {
namespace {

std::size_t CountBits(std::vector<std::uint32_t> const& words) {
    std::size_t count = 0;
    for (std::uint32_t const word : words) count += static_cast<std::size_t>(std::popcount(word));
    return count;
}

}  // namespace

void ObjectPixels::Resize(Box const& box) {
    bool const isEmpty = box.x0 >= box.x1 || box.y0 >= box.y1;
    rows_ = isEmpty ? 0 : box.y1 - box.y0;
    stride_ = isEmpty ? 0 : (box.x1 - box.x0 - 1) / 32 + 1;
    count_ = 0;
    words_.assign(rows_ * stride_, 0);
}

void ObjectPixels::Take(algorithm::BitMask const& foreground, Box const& box, unsigned int rim) {
    Resize(box);
    if (words_.empty()) return;
    unsigned int const shift = box.x0 % 32, width = box.x1 - box.x0;
    std::uint32_t const tail = ~0U << (31 - (width - 1) % 32);
    std::size_t const last = (box.x1 - 1) / 32;
    for (std::size_t y = 0; y < rows_; ++y) {
        std::uint32_t const* const from = foreground.GetData().data() + (box.y0 + y) * foreground.GetStride();
        std::uint32_t* const to = words_.data() + y * stride_;
        for (std::size_t i = 0; i < stride_; ++i) {
            std::size_t const word = box.x0 / 32 + i;
            to[i] = from[word] << shift;
            if (shift != 0 && word < last) to[i] |= from[word + 1] >> (32 - shift);
        }
        to[stride_ - 1] &= tail;
    }
    std::size_t const all = count_ = CountBits(words_);
    scratch_.resize(words_.size());
    for (; rim > 0; --rim) {
        algorithm::bit_mask::Erode8Way(words_.data(), scratch_.data(), rows_, stride_);
        std::size_t const left = CountBits(scratch_);
        if (3 * left < all || left == 0) return;
        words_.swap(scratch_);
        count_ = left;
    }
}

void ObjectPixels::TakeEllipse(Box const& box) {
    Resize(box);
    double const width = box.x1 - box.x0, height = box.y1 - box.y0;
    for (std::size_t y = 0; y < rows_; ++y) {
        double const down = (2.0 * static_cast<double>(y) + 1 - height) / height;
        for (std::size_t x = 0; x < (rows_ == 0 ? 0 : box.x1 - box.x0); ++x) {
            double const right = (2.0 * static_cast<double>(x) + 1 - width) / width;
            if (right * right + down * down <= 1) words_[y * stride_ + x / 32] |= 0x80000000U >> x % 32;
        }
    }
    count_ = CountBits(words_);
}

}  // namespace qel::colour_classifier
