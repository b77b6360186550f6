#pragma once

#include <algorithm>

namespace qel::algorithm::bit_mask {

/// Columns or rows from begin to end, the end exclusive; empty when they are equal.
struct Interval {
    int begin;
    int end;
};

/// Cuts [begin, end) to an extent, read as a signed number, with extent - 1 as the exclusive upper bound: the last
/// column or row is never inside (kept). The beginning has no upper bound; the end is never before it.
constexpr Interval Clip(int begin, int end, unsigned int extent) {
    int const last = static_cast<int>(extent - 1U);
    int const first = std::max(std::min(last, 0), begin);
    return {first, std::max(std::min(std::max(last, 0), end), first)};
}

}  // namespace qel::algorithm::bit_mask
