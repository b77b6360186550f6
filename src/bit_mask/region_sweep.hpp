#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bit_mask/lane_kernels.hpp"
#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/point.hpp"

namespace qel::algorithm::bit_mask {

/// Grows a region over fillable pixels (set in src, clear in dst) by whole rows: down the mask and up again, row after
/// row that may change. Fast where rows hold many pieces of the region, slow where it winds.
class RegionSweep {
public:
    /// Takes the first height rows of two masks of one size, height > 0. They have to outlive this.
    RegionSweep(BitMask const& src, BitMask& dst, unsigned int height);

    /// Adds columns first to last, both inclusive, of a row to the region.
    void Add(unsigned int first, unsigned int last, unsigned int row);

    /// Sweeps as long as that changes much of the rows it looks at.
    void Run();

    /// Sets the region in dst.
    void Store() const;

    /// For each row that may still change, calls push(point) with one pixel of each run that touches the region.
    template <class Push>
    void ForEachOpenRun(Push push);

private:
    Lane* Region(std::size_t row) { return region_.data() + 1 + row * (lanes_ + 1); }
    Lane const* Region(std::size_t row) const { return region_.data() + 1 + row * (lanes_ + 1); }
    Lane const* Fillable(std::size_t row) const { return fillable_.data() + row * lanes_; }

    /// Finds the fillable pixels outside the region that touch it in the rows above and below; false without any.
    bool FindSeeds(std::size_t row);
    /// Takes the runs of the seeds into the region; returns how many lanes that changed.
    std::size_t FillSeeds(std::size_t row);
    std::size_t Update(std::size_t row);
    void MarkNeighbours(std::size_t row);

    BitMask* dst_;
    std::size_t height_;
    std::size_t lanes_;
    std::vector<Lane> fillable_;
    std::vector<Lane> region_;  ///< an empty lane before each row and behind the last
    std::vector<Lane> seeds_, leading_;
    LaneKernels const* kernels_ = &GetLaneKernels();
    std::vector<std::uint8_t> open_;  ///< rows that may change
    std::size_t openRows_ = 0;
};

template <class Push>
void RegionSweep::ForEachOpenRun(Push push) {
    for (std::size_t row = 0; row < height_; ++row) {
        if (open_[row] == 0 || !FindSeeds(row)) continue;
        Lane carry = 0;
        for (std::size_t i = 0; i < lanes_; ++i) {
            Lane const seeds = seeds_[i];
            for (unsigned int bit = 0; bit < 64; ++bit) {
                bool const starts = (seeds << bit >> 63U & ~carry & 1U) != 0;
                carry = seeds << bit >> 63U;
                if (starts) {
                    push(geometry::Point<unsigned int, 2>{static_cast<unsigned int>(64 * i) + bit,
                                                          static_cast<unsigned int>(row)});
                }
            }
        }
    }
}

}  // namespace qel::algorithm::bit_mask
