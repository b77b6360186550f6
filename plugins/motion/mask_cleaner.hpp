#pragma once

#include "qel/algorithm/bit_mask.hpp"

namespace qel::motion {

/// Cleans masks with 3 x 3 openings and closings; keeps its buffer.
class MaskCleaner {
public:
    /// Takes specks away (opening: erosions, then as many dilations), then fills gaps (closing: dilations, then as many
    /// erosions). Padding bits end clear. What an erosion takes at the border of the mask, only dilation brings back.
    void Clean(algorithm::BitMask& mask, unsigned int openings, unsigned int closings);

private:
    void Erode(algorithm::BitMask& mask, unsigned int times);
    void Dilate(algorithm::BitMask& mask, unsigned int times);

    algorithm::BitMask scratch_;
};

}  // namespace qel::motion
