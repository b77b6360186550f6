#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/export.hpp"

namespace qel::algorithm {

/// Labels the set pixels of a mask into blobs, a whole image per call; padding bits are not read.
///
/// Keeps its buffers: masks of one size allocate on the first call only. They grow with the blobs that occur.
/// Movable, not copyable; one thread at a time. An object moved from can only be assigned to or destroyed: labelling
/// with it throws std::logic_error ("Pimpl is null").
class QEL_ALGORITHM_EXPORT ConnectedComponents {
public:
    /// A blob of pixels; columns and rows are inclusive.
    struct Blob {
        unsigned int area{};    ///< pixels; see Connect8Way for those that are not counted
        unsigned int minX{};    ///< bounding box: first column
        unsigned int minY{};    ///< bounding box: first row
        unsigned int maxX{};    ///< bounding box: last column
        unsigned int maxY{};    ///< bounding box: last row
        unsigned int firstX{};  ///< the blob's first pixel, top row first, then left-most
        unsigned int firstY{};

        friend bool operator==(Blob const&, Blob const&) = default;
    };

    ConnectedComponents();
    ConnectedComponents(ConnectedComponents&& other) noexcept;
    ConnectedComponents& operator=(ConnectedComponents other) noexcept;
    ~ConnectedComponents();

    /// Replaces blobs by those of at least min_area pixels, in raster order of their first pixel; returns their number.
    /// Pixels touch sideways, up and down and diagonally. Box and first pixel are exact. The area leaves out pixels
    /// whose row began under a part of the blob that had already been joined to an older part, until the row meets
    /// another part: kept, min_area counts the same way.
    std::size_t Connect8Way(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs);
    /// The same where pixels touch sideways, up and down only.
    std::size_t Connect4Way(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs);

    /// Exchanges the buffers.
    friend void swap(ConnectedComponents& a, ConnectedComponents& b) noexcept { a.impl_.swap(b.impl_); }

private:
    struct QEL_ALGORITHM_NO_EXPORT Impl;

    std::unique_ptr<Impl> impl_;
};

void swap(ConnectedComponents& a, ConnectedComponents& b) noexcept;

}  // namespace qel::algorithm
