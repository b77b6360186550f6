#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::bit_mask {

/// Words that the columns first - 1 to last + 1 of a straight run may lie in.
constexpr std::size_t MaxStraightWords = 16;

/// Fills, row after row, a run of fillable pixels (set in src, clear in dst) that ends in the same columns on each row.
struct StraightRunKernel {
    char const* name;
    /// Sets columns first to last of dst in as many rows, the given one included, as have just this run between columns
    /// first - 1 and last + 1, but no more than rows; returns how many. src and dst: the first word of the first row;
    /// step: words to the next row. Requires 0 < first <= last, last + 1 inside the row, and no more words than the
    /// limit.
    std::size_t (*fill)(std::uint32_t const* src, std::uint32_t* dst, std::ptrdiff_t step, std::size_t rows,
                        unsigned int first, unsigned int last);
};

/// Those this machine can run, the fastest last.
boost::span<StraightRunKernel const> GetSupportedStraightRunKernels();

/// The fastest of them, chosen once.
StraightRunKernel const& GetStraightRunKernel();

}  // namespace qel::algorithm::bit_mask
