#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::bit_mask {

/// 64 pixels of a row, the first in the highest bit.
using Lane = std::uint64_t;

/// Writes to seeds what is set in fillable, clear in region and touches, diagonally as well, what is set in the rows
/// above and below; false when that is nothing. above and below have a lane before their first and behind their last.
using FindSeedsKernel = bool (*)(Lane const* above, Lane const* below, Lane const* fillable, Lane const* region,
                                 Lane* seeds, std::size_t lanes);

/// Extends seeds rightwards over fillable, each lane by itself; leading receives the run that begins with the lane.
using FillRightwardsKernel = void (*)(Lane const* fillable, Lane* seeds, Lane* leading, std::size_t lanes);

/// The lane loops of growing a region for one instruction set.
struct LaneKernels {
    char const* name;
    FindSeedsKernel findSeeds;
    FillRightwardsKernel fillRightwards;
};

/// Those this machine can run, the fastest last.
boost::span<LaneKernels const> GetSupportedLaneKernels();

/// The fastest of them, chosen once.
LaneKernels const& GetLaneKernels();

}  // namespace qel::algorithm::bit_mask
