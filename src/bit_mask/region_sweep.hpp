#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "bit_mask/lane_kernels.hpp"
#include "qel/algorithm/bit_mask.hpp"

namespace qel::algorithm::bit_mask {

/// Grows a region over fillable pixels (set in src, clear in dst) by whole rows: down the mask and up again, row after
/// row that may change. Fast where rows hold many pieces of the region, slow where it winds. Rows that follow each
/// other and have the same fillable pixels are a band, and grow as one: the region holds whole runs, the same in each
/// of them.
class RegionSweep {
public:
    /// Takes the first height rows of two masks of one size, height > 0. They have to outlive this.
    RegionSweep(BitMask const& src, BitMask& dst, std::size_t height);

    /// Adds a run to the region, columns first to last of a row, both inclusive. Requires that they are fillable and
    /// those beside them not; not checked.
    void Add(unsigned int first, unsigned int last, std::size_t row);

    /// Sweeps as long as that changes much of the bands it looks at.
    void Run();

    /// Sets the region in dst.
    void Store() const;

    /// For each band that may still change, calls push(column, row) with one pixel of each run that touches the region.
    template <class Push>
    void ForEachOpenRun(Push push) const;

private:
    // A band goes by its first row. Before the first row and behind the last lie empty ones. A row that is not prepared
    // is a band by itself.
    std::size_t Band(std::size_t row) const { return row - rows_[row].above; }
    std::size_t Above(std::size_t band) const { return band == 0 ? band - 1 : Band(band - 1); }
    std::size_t Below(std::size_t band) const { return band + rows_[band].below + 1; }

    Lane* Fillable(std::size_t band) const { return groups_[2 * pitch_ * (band + 1)].data(); }
    Lane* Region(std::size_t band) const { return Fillable(band) + LaneGroup * pitch_; }

    /// Finds the band that a row is in, unless that is done or there is no such row.
    void Prepare(std::size_t row) {
        if (row < height_ && !rows_[row].prepared) FindBand(row);
    }
    void FindBand(std::size_t row);
    /// How many of the given number of rows that follow a row, by a step of words, have the same fillable pixels.
    std::size_t CountRepeated(std::size_t row, std::ptrdiff_t step, std::size_t rows) const;
    void PrepareNeighbours(std::size_t band);
    /// Has a band looked at in the next sweep, if there is such a band.
    void Open(std::size_t band);
    void Update(std::size_t band);

    BitMask const* src_;
    BitMask* dst_;
    std::size_t height_;
    std::size_t lanes_;
    std::size_t pitch_;  ///< groups of lanes to a row: an empty lane behind each row at least
    Lane last_;          ///< the columns inside the width, of the last lane
    // A line of the cache. Both rows of a band side by side: so lanes that are stored and those that are read next lie
    // in different places of a page, or the processor would take them for the same.
    using Group = std::array<Lane, LaneGroup>;
    struct alignas(sizeof(Group)) AlignedGroup : Group {};
    /// For each band its fillable pixels, then the region, neither holding anything before it is prepared: small
    /// regions of large masks cost what they reach. Then two rows of scratch.
    std::unique_ptr<AlignedGroup[]> groups_;
    LaneKernels const* kernels_ = &GetLaneKernels();
    struct RowState {
        std::uint32_t above, below;  ///< rows of the same band
        bool prepared;
        bool open;     ///< of a band: may change
        bool reached;  ///< of a band: has pixels of the region
    };
    std::vector<RowState> rows_;
    std::size_t visited_ = 0, gained_ = 0;  ///< bands grown in a sweep, and lanes that this changed
    std::size_t lowest_, highest_ = 0;      ///< of the bands that are prepared
};

template <class Push>
void RegionSweep::ForEachOpenRun(Push push) const {
    // Row by row, not waiting for where a band ends; only a band's first one is open.
    for (std::size_t band = lowest_; band <= highest_; ++band) {
        if (!rows_[band].open) continue;
        // From the lane before the row on.
        Lane const *const above = Region(Above(band)) - 1, *const below = Region(Below(band)) - 1;
        Lane previousSeeds = 0;
        for (std::size_t i = 0; i < lanes_; ++i) {
            Lane const previous = above[i] | below[i], current = above[i + 1] | below[i + 1],
                       next = above[i + 2] | below[i + 2];
            Lane const touched = current | current << 1U | previous >> 63U | current >> 1U | next << 63U;
            Lane const seeds = touched & Fillable(band)[i] & ~Region(band)[i];
            for (Lane starts = seeds & ~(seeds << 1U | previousSeeds >> 63U); starts != 0; starts &= starts - 1) {
                push(static_cast<unsigned int>(64 * i) + static_cast<unsigned int>(std::countr_zero(starts)),
                     static_cast<unsigned int>(band));
            }
            previousSeeds = seeds;
        }
    }
}

}  // namespace qel::algorithm::bit_mask
