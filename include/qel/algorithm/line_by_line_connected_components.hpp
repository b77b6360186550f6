#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "qel/algorithm/concom/blob_stats.hpp"
#include "qel/algorithm/export.hpp"

namespace qel::algorithm {

/// Labels an image that arrives row by row, 8-way, holding two rows: a blob is reported once, with the first row that
/// does not continue it.
///
/// Its buffers are made for the width at construction. Movable, not copyable; one thread at a time. An object moved
/// from can only be assigned to or destroyed: a row for it throws std::logic_error ("Pimpl is null").
class QEL_ALGORITHM_EXPORT LineByLineConnectedComponents {
public:
    /// width: pixels a row.
    explicit LineByLineConnectedComponents(unsigned int width);
    LineByLineConnectedComponents(LineByLineConnectedComponents&& other) noexcept;
    LineByLineConnectedComponents& operator=(LineByLineConnectedComponents other) noexcept;
    ~LineByLineConnectedComponents();

    /// Takes the next row and replaces finished by the blobs that ended with the row before, in the order in which
    /// that row opened them; their parent is that position, from 1. A row without foreground ends all blobs.
    /// row: (width + 31) / 32 words as in BitMask; padding is not read. The area is an estimate where blobs split and
    /// join: every part inherits what its row above had, and parts that join keep the larger; blobs that a row joins
    /// stay apart when earlier runs of the row represent both already.
    /// Throws std::bad_alloc, and then the row has not been taken.
    void LineByLine8Way(std::uint32_t const* row, std::vector<concom::BlobStats>& finished);

    /// Exchanges the two streams.
    friend void swap(LineByLineConnectedComponents& a, LineByLineConnectedComponents& b) noexcept {
        a.impl_.swap(b.impl_);
    }

private:
    struct QEL_ALGORITHM_NO_EXPORT Impl;

    std::unique_ptr<Impl> impl_;
};

void swap(LineByLineConnectedComponents& a, LineByLineConnectedComponents& b) noexcept;

}  // namespace qel::algorithm
