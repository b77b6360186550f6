#pragma once

#include <cstdint>
#include <vector>

#include "mask_runs.hpp"
#include "picture.hpp"

namespace qel::privacy_mask {

/// Hides runs of pixels of a plane; keeps its buffers. What lies outside the runs is not written.
class Painter {
public:
    /// The largest block that fits the sums.
    static constexpr unsigned int LargestBlock = 128;

    /// Makes the runs black.
    void Blank(Plane const& plane, std::vector<PixelRun> const& runs);

    /// Gives each sample of the runs the mean of its block: block x block samples, counted from the upper left corner;
    /// the last block of each row and column takes what is left over as well. The mean is that of all samples of the
    /// block, rounded, so that a lone sample does not stay what it was.
    /// Requires 1 <= block <= LargestBlock, runs in rising order of their rows, and a plane at least a block in width
    /// and height.
    void Pixelate(Plane const& plane, std::vector<PixelRun> const& runs, unsigned int block);

private:
    void MarkBlocks(std::vector<PixelRun>::const_iterator run, std::vector<PixelRun>::const_iterator end,
                    unsigned int block);
    void AverageBlocks(Plane const& plane, unsigned int top, unsigned int bottom, unsigned int block);

    std::vector<std::uint8_t> row_;       // what is written, a row of samples
    std::vector<std::uint16_t> sums_;     // of the columns of a row of blocks
    std::vector<std::uint8_t> isMarked_;  // a block of that row
};

}  // namespace qel::privacy_mask
