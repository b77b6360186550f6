#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "concom/blob_store.hpp"
#include "concom/lanes.hpp"
#include "concom/row_edges.hpp"

namespace qel::algorithm::concom {

/// How far beyond its own columns a run sees the row above.
constexpr std::uint32_t CombineBlob4Way = 0;
constexpr std::uint32_t CombineBlob8Way = 1;

/// Pixels of a row that took the same label: those from column first up to the next segment's.
///
/// Where rows are labelled run by run a segment is a run, or a part of one; where they are labelled in bulk it has all
/// runs up to the next one of another label. Aligned to a power of two: segments are found by their number.
struct alignas(16) Segment {
    std::uint32_t first;
    std::uint32_t end;  ///< behind its last pixel; only where rows are labelled run by run
    std::uint32_t label;
};

/// No run begins or ends here, or a column before.
constexpr std::uint32_t RightOfAll = std::numeric_limits<std::uint32_t>::max() - 1;
/// Stands twice behind a row's last segment.
constexpr Segment Guard{RightOfAll, RightOfAll, 0};

/// A mask that is being labelled: the row above, which has been, and the current row, which is next.
struct MaskRows {
    /// Makes the current row, now labelled, the one above; what one manner of labelling needs is left to it.
    [[gnu::always_inline]] void Advance() {
        std::swap(above, current);
        ++y;
    }

    /// Records that a row may start, and one that is started for nothing.
    [[gnu::always_inline]] std::size_t CountNewRecords() const { return std::size_t{width} / 2 + 2; }

    std::uint32_t const* words;
    std::size_t stride;
    unsigned int width;
    std::size_t y;     ///< the current row
    std::size_t last;  ///< where to stop
    Segment* above;
    Segment* current;

    // Run by run: edges of the runs and where segments end.
    RowEdges scan;
    std::uint32_t* edgesEnd;

    // In bulk: the pixels between two clear lanes, the columns where segments begin (but for the first), and scratch.
    Lane* abovePixels;
    Lane* pixels;
    Lane* aboveBegins;
    Lane* begins;
    Lane* fresh;
    Lane* touched;

    BlobRecords records;
    std::size_t room;       ///< for records, those started included
    std::uint32_t started;  ///< records started before the row above
};

}  // namespace qel::algorithm::concom
