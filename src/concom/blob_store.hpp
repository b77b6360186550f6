#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qel/algorithm/connected_components.hpp"

namespace qel::algorithm::concom {

/// What is counted on a record: area and box, but for the first row. Four numbers in one vector, so that a run is
/// counted at once: all start at 0 and only grow, which is why the first column is held as its complement.
class InternalBlob {
public:
    /// Counts columns first to end - 1 of row y. Rows must not come out of order.
    [[gnu::always_inline]] void Count(std::uint32_t first, std::uint32_t end, std::uint32_t y) noexcept {
        Add(Numbers{end, ~first, end, y} - Numbers{first, 0, 0, 0});
    }

    /// The same with another number of pixels: not all among those columns, or some of another record.
    [[gnu::always_inline]] void Count(std::uint32_t pixels, std::uint32_t first, std::uint32_t end,
                                      std::uint32_t y) noexcept {
        Add(Numbers{pixels, ~first, end, y});
    }

    /// Makes room for another box.
    void AddBox(InternalBlob const& other) noexcept {
        std::uint32_t const area = GetArea();
        numbers_ = other.numbers_ > numbers_ ? other.numbers_ : numbers_;
        numbers_[0] = area;
    }

    [[gnu::always_inline]] void AddArea(std::uint32_t pixels) noexcept { numbers_[0] += pixels; }

    std::uint32_t GetArea() const noexcept { return numbers_[0]; }
    std::uint32_t GetMinX() const noexcept { return ~numbers_[1]; }
    /// Behind the last column.
    std::uint32_t GetEndX() const noexcept { return numbers_[2]; }
    std::uint32_t GetMaxY() const noexcept { return numbers_[3]; }

private:
    using Numbers = std::uint32_t __attribute__((vector_size(16)));

    [[gnu::always_inline]] void Add(Numbers run) noexcept {
        Numbers const most = run > numbers_ ? run : numbers_;
        numbers_ = __builtin_shufflevector(numbers_ + run, most, 0, 5, 6, 7);
    }

    Numbers numbers_{};
};

/// The pixel that created a record. Its row is the smallest as well: a record is merged into older ones only.
/// Column and row in one number, which is written at once.
class FirstPixel {
public:
    FirstPixel() = default;
    FirstPixel(std::uint32_t x, std::uint32_t y) : value_(std::uint64_t{y} << 32U | x) {}

    std::uint32_t GetX() const { return static_cast<std::uint32_t>(value_); }
    std::uint32_t GetY() const { return static_cast<std::uint32_t>(value_ >> 32U); }

private:
    std::uint64_t value_ = 0;
};

/// The records of one mask, numbered in the raster order of the pixels that created them: equivalence classes as
/// parent links that lead to ever older records.
///
/// A link may be shortened at any time: only which record is the root, and which record a pixel is counted on, can be
/// seen in the result. Its functions become part of loops that are compiled for several instruction sets.
struct BlobRecords {
    /// Notes the pixel that starts the next record and returns the record's number; it counts from the next call on
    /// where keep is 1, and is the next one still where keep is 0. Requires room; not checked.
    [[gnu::always_inline]] std::uint32_t Start(std::uint32_t x, std::uint32_t y, std::uint32_t keep) noexcept {
        std::uint32_t const label = count;
        firsts[label] = {x, y};
        count += keep;
        return label;
    }

    /// Joins the classes of two records; the oldest root survives, takes the other's area and is returned.
    [[gnu::always_inline]] std::uint32_t MergeBlobs(std::uint32_t a, std::uint32_t b) noexcept {
        a = FindRoot(a);
        b = FindRoot(b);
        std::uint32_t const winner = std::min(a, b);
        if (a != b) blobs[winner].AddArea(Join(std::max(a, b), winner));
        return winner;
    }

    /// Joins the class of a root to that of an older one, and returns the pixels that the older one is to take over.
    [[gnu::always_inline]] std::uint32_t Join(std::uint32_t root, std::uint32_t older) noexcept {
        parents[root] = older;
        merged[mergedCount++] = root;
        return blobs[root].GetArea();
    }

    [[gnu::always_inline]] std::uint32_t FindRoot(std::uint32_t label) noexcept {
        while (parents[label] != label) {
            parents[label] = parents[parents[label]];
            label = parents[label];
        }
        return label;
    }

    InternalBlob* blobs;
    FirstPixel* firsts;
    std::uint32_t* parents;  ///< the record each was merged into; its own number for a root
    std::uint32_t* merged;   ///< those that are no roots
    std::uint32_t count;
    std::uint32_t mergedCount;
};

/// The memory of records, which grows with those that occur.
class BlobStore {
public:
    /// Forgets these records, keeps their memory.
    void Clear(BlobRecords& records) noexcept;

    /// Makes room for so many more records than records has, and has it point there; returns for how many there is.
    std::size_t Reserve(BlobRecords& records, std::size_t more);

    /// Carries the boxes of merged records to their roots. Their areas stay behind: what was counted on a record after
    /// it was merged is not reported (kept).
    static void StitchBlobs(BlobRecords& records) noexcept;

    /// Replaces blobs by the roots of at least min_area pixels, oldest first.
    static void FilterBlobs(BlobRecords const& records, unsigned int min_area,
                            std::vector<ConnectedComponents::Blob>& blobs);

private:
    // Records that have not been started are there already: without pixels, and their own roots.
    std::vector<FirstPixel> firsts_;
    std::vector<std::uint32_t> merged_;
    std::vector<std::uint32_t> parents_;
    std::vector<InternalBlob> blobs_;  // never longer than the others
};

}  // namespace qel::algorithm::concom
