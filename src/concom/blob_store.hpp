#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qel/algorithm/connected_components.hpp"

namespace qel::algorithm::concom {

/// A record in the making. Records are numbered in the raster order of the pixels that created them.
struct InternalBlob {
    std::uint32_t area;
    std::uint32_t minX;
    std::uint32_t maxX;
    std::uint32_t maxY;
    std::uint32_t firstX;
    std::uint32_t firstY;  ///< the smallest row as well: a record is merged into older ones only
    std::uint32_t parent;  ///< the record this one was merged into; its own number for a root
};

/// The records of one mask: equivalence classes as parent links that lead to ever older records.
///
/// Grows with the records that occur. A link may be shortened at any time: only which record is the root, and which
/// record a pixel is counted on, can be seen in the result.
class BlobStore {
public:
    /// Forgets all records, keeps their memory.
    void Clear() noexcept { count_ = 0; }

    /// Makes room for so many further calls of Start.
    void Reserve(std::size_t more) {
        if (more > records_.size() - count_) records_.resize(std::max(count_ + more, 2 * records_.size()));
    }

    /// Starts a record without pixels at its first one and returns its number; when it is not kept, the next call
    /// starts the same one again. Requires room; not checked.
    std::uint32_t Start(std::uint32_t x, std::uint32_t y, bool keep) noexcept {
        std::uint32_t const label = static_cast<std::uint32_t>(count_);
        records_[label] = {0, x, x, y, x, y, label};
        count_ += keep ? 1 : 0;
        return label;
    }

    /// Counts columns first to last - 1 of row y on the record as it is, merged away or not.
    void UpdateBlob(std::uint32_t label, std::uint32_t first, std::uint32_t last, std::uint32_t y) noexcept {
        InternalBlob& blob = records_[label];
        blob.area += last - first;
        blob.minX = std::min(blob.minX, first);
        blob.maxX = std::max(blob.maxX, last - 1);
        blob.maxY = y;
    }

    /// Joins the classes of two records; the oldest root survives, takes the other's area and is returned.
    std::uint32_t MergeBlobs(std::uint32_t a, std::uint32_t b) noexcept {
        std::uint32_t const rootA = FindRoot(a);
        std::uint32_t const rootB = FindRoot(b);
        if (rootA == rootB) return rootA;
        std::uint32_t const winner = std::min(rootA, rootB);
        std::uint32_t const loser = std::max(rootA, rootB);
        records_[loser].parent = winner;
        records_[winner].area += records_[loser].area;
        return winner;
    }

    /// Carries the boxes of merged records to their roots; returns the number of roots of at least min_area pixels.
    /// Their areas stay behind: what was counted on a record after it was merged is not reported (kept).
    std::size_t StitchBlobs(unsigned int min_area) noexcept;

    /// Replaces blobs by those roots, oldest first; count is what StitchBlobs returned.
    void FilterBlobs(std::size_t count, unsigned int min_area, std::vector<ConnectedComponents::Blob>& blobs) const;

private:
    std::uint32_t FindRoot(std::uint32_t label) noexcept {
        while (records_[label].parent != label) {
            std::uint32_t& parent = records_[label].parent;
            parent = records_[parent].parent;
            label = parent;
        }
        return label;
    }

    std::vector<InternalBlob> records_;
    std::size_t count_ = 0;
};

}  // namespace qel::algorithm::concom
