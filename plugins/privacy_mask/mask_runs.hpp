#pragma once

#include <vector>

#include "qel/algorithm/bit_mask.hpp"

namespace qel::privacy_mask {

/// Neighbouring set pixels of a row: columns first to last - 1.
struct PixelRun {
    unsigned int row, first, last;

    friend bool operator==(PixelRun const&, PixelRun const&) = default;
};

/// Replaces runs by those of a mask, each as long as can be, row by row from left to right. Requires clear padding
/// bits.
void FindRuns(algorithm::BitMask const& mask, std::vector<PixelRun>& runs);

/// Makes half a mask of half the size, odd sizes rounded up: a pixel is set where any of the four pixels is that it
/// stands for. Requires clear padding bits.
void Halve(algorithm::BitMask const& mask, algorithm::BitMask& half);

}  // namespace qel::privacy_mask
