#pragma once

#include <cstddef>
#include <cstdint>
#include <stack>

namespace qel::algorithm::bit_mask {

/// A run of pixels still to be filled; columns are inclusive.
struct Range {
    Range(std::uint32_t first, std::uint32_t last, std::uint32_t y, bool below, bool left, bool right)
        : start(first), end(last), row(y), direction(below), extendLeft(left), extendRight(right) {}

    std::uint32_t start;
    std::uint32_t end;
    std::uint32_t row;
    std::uint32_t direction : 1;    ///< 1: found below a filled run, 0: above one; the seed has 0
    std::uint32_t extendLeft : 1;   ///< began at the left end of its scan: may go on further left
    std::uint32_t extendRight : 1;  ///< reached the right end of its scan: may go on further right

    friend bool operator==(Range const&, Range const&) = default;
};

/// Pushes, from left to right, the runs of one row that are set in src and clear in dst between columns from - 1 and
/// to + 1: a column more on either side, for the diagonals. src, dst: the masks' first words. Requires from <= to.
void ScanRow(std::uint32_t const* src, std::uint32_t const* dst, unsigned int width, std::size_t stride,
             std::stack<Range>& stack, unsigned int from, unsigned int to, unsigned int row, bool direction);

}  // namespace qel::algorithm::bit_mask
