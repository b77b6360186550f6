#include "qel/algorithm/concom/blob_stats.hpp"

#include <ostream>
#include <utility>

namespace qel::algorithm::concom {

BlobStats::BlobStats(unsigned int parent_, unsigned int min_, unsigned int max_, unsigned int width_,
                     unsigned int height_, unsigned int min_bound_, unsigned int max_bound_,
                     unsigned int area_) noexcept
    : parent(parent_),
      min(min_),
      max(max_),
      width(width_),
      height(height_),
      min_bound(min_bound_),
      max_bound(max_bound_),
      area(area_) {}

BlobStats::BlobStats(BlobStats&& other) noexcept : BlobStats() { swap(*this, other); }

BlobStats& BlobStats::operator=(BlobStats other) noexcept {
    swap(*this, other);
    return *this;
}

void swap(BlobStats& a, BlobStats& b) noexcept {
    // Field by field: std::swap of the records would move them, and moving is built on this.
    std::swap(a.parent, b.parent);
    std::swap(a.min, b.min);
    std::swap(a.max, b.max);
    std::swap(a.width, b.width);
    std::swap(a.height, b.height);
    std::swap(a.min_bound, b.min_bound);
    std::swap(a.max_bound, b.max_bound);
    std::swap(a.area, b.area);
}

std::ostream& operator<<(std::ostream& stream, BlobStats const& stats) {
    // The blank before the brace is kept: logs are compared by it.
    return stream << "{\"parent\":" << stats.parent << ", \"min\":" << stats.min << ", \"max\":" << stats.max
                  << ", \"width\":" << stats.width << ", \"height\":" << stats.height
                  << ", \"min_bound\":" << stats.min_bound << ", \"max_bound\":" << stats.max_bound
                  << ", \"area\":" << stats.area << " }";
}

}  // namespace qel::algorithm::concom
