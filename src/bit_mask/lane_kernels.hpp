#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::bit_mask {

/// 64 pixels of a row, the first in the lowest bit: additions then carry to the right, from lane to lane as well.
using Lane = std::uint64_t;

/// Kernels may read and write as many lanes more as fill up the last group of this many.
constexpr std::size_t LaneGroup = 8;

/// The lane loops of growing a region for one instruction set.
struct LaneKernels {
    char const* name;

    /// Writes as lanes the pixels set in src and clear in dst, rows of the given number of words, and clears the
    /// region's row; both to their pitch, a multiple of groups.
    void (*load)(std::uint32_t const* src, std::uint32_t const* dst, std::size_t words, Lane* fillable, Lane* region,
                 std::size_t pitch);

    /// How many of the given number of rows that follow the first, each by a step of words, have the same pixels set in
    /// src and clear in dst; counts up to the first that has not.
    std::size_t (*countRepeated)(std::uint32_t const* src, std::uint32_t const* dst, std::size_t words,
                                 std::ptrdiff_t step, std::size_t rows);

    /// Grows the region of a row: by what is fillable and touches, diagonally as well, the region in the rows above
    /// and below, and by the rest of the runs of fillable pixels that this reaches. Returns how many lanes that
    /// changed. The lanes before the first and behind the last of each row are empty; so are those that fill up a
    /// group. scratch: two rows of lanes, whatever they hold.
    std::size_t (*grow)(Lane const* above, Lane const* below, Lane const* fillable, Lane* region, Lane* scratch,
                        std::size_t lanes);

    /// Sets the region's pixels in dst.
    void (*store)(Lane const* region, std::uint32_t* dst, std::size_t words);
};

/// Those this machine can run, the fastest last.
boost::span<LaneKernels const> GetSupportedLaneKernels();

/// The fastest of them, chosen once.
LaneKernels const& GetLaneKernels();

}  // namespace qel::algorithm::bit_mask
