#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "bit_mask/lane_kernels.hpp"
#include "qel/algorithm/bit_mask.hpp"

namespace qel::algorithm::bit_mask {

/// Grows a region over fillable pixels (set in src, clear in dst) by whole rows: down the mask and up again, row after
/// row that may change. Fast where rows hold many pieces of the region, slow where it winds.
class RegionSweep {
public:
    /// Takes the first height rows of two masks of one size, height > 0. They have to outlive this.
    RegionSweep(BitMask const& src, BitMask& dst, std::size_t height);

    /// Adds columns first to last, both inclusive, of a row to the region.
    void Add(unsigned int first, unsigned int last, std::size_t row);

    /// Sweeps as long as that changes much of the rows it looks at.
    void Run();

    /// Sets the region in dst.
    void Store() const;

    /// For each row that may still change, calls push(column, row) with one pixel of each run that touches the region.
    template <class Push>
    void ForEachOpenRun(Push push) const;

private:
    Lane* Region(std::size_t row) const { return region_.get() + LaneGroup + (row + 1) * pitch_; }
    Lane* Fillable(std::size_t row) const { return fillable_.get() + row * pitch_; }

    void Prepare(std::size_t row);
    void Open(std::size_t row);
    /// Opens the rows beside one that has changed.
    void OpenNeighbours(std::size_t row);
    void Update(std::size_t row);
    /// Whether a row has the same fillable pixels as the one above it; found once, when all has been added.
    bool IsRepeated(std::size_t row);
    /// Grows a row by what has changed above or below it. Returns how many lanes that changed.
    std::size_t Grow(std::size_t row, bool byAbove, bool byBelow);

    BitMask const* src_;
    BitMask* dst_;
    std::size_t height_;
    std::size_t lanes_;
    std::size_t pitch_;  ///< lanes from row to row: an empty one behind each row at least
    Lane last_;          ///< the columns inside the width, of the last lane
    // Neither holds anything in a row before it is prepared: small regions of large masks cost what they reach.
    std::unique_ptr<Lane[]> fillable_;
    std::unique_ptr<Lane[]> region_;  ///< an empty row before the first and behind the last
    std::unique_ptr<Lane[]> scratch_;
    LaneKernels const* kernels_ = &GetLaneKernels();
    struct RowState {
        bool prepared, open;
        bool changedAbove, changedBelow;  ///< which neighbours have changed since the row was grown
        enum : std::uint8_t { Unknown, Repeated, Different } content;
    };
    std::vector<RowState> rows_;
    std::size_t visited_ = 0, gained_ = 0;  ///< rows grown in a sweep, and lanes that this changed
    std::size_t lowest_, highest_ = 0;      ///< of the rows ever open
};

template <class Push>
void RegionSweep::ForEachOpenRun(Push push) const {
    for (std::size_t row = 0; row < height_; ++row) {
        if (!rows_[row].open) continue;
        // From the lane before the row on.
        Lane const *const above = Region(row) - pitch_ - 1, *const below = Region(row) + pitch_ - 1;
        Lane previousSeeds = 0;
        for (std::size_t i = 0; i < lanes_; ++i) {
            Lane const previous = above[i] | below[i], current = above[i + 1] | below[i + 1],
                       next = above[i + 2] | below[i + 2];
            Lane const touched = current | current << 1U | previous >> 63U | current >> 1U | next << 63U;
            Lane const seeds = touched & Fillable(row)[i] & ~Region(row)[i];
            for (Lane starts = seeds & ~(seeds << 1U | previousSeeds >> 63U); starts != 0; starts &= starts - 1) {
                push(static_cast<unsigned int>(64 * i) + static_cast<unsigned int>(std::countr_zero(starts)),
                     static_cast<unsigned int>(row));
            }
            previousSeeds = seeds;
        }
    }
}

}  // namespace qel::algorithm::bit_mask
