#pragma once

#include <cstdint>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/video/result.hpp"

namespace qel::privacy_mask {

/// Which pixels of moving things are hidden.
enum class MovingPart {
    None,
    Shapes,  ///< the foreground of the result
    Boxes,   ///< the boxes of all its objects
};

/// Draws what earlier algorithms of the run found; keeps its buffers.
class MovingMask {
public:
    /// Sets the pixels of a part in mask, grown by some pixels in all eight directions; padding bits stay clear.
    /// Throws std::invalid_argument, and sets nothing, for shapes when the result has no foreground of the mask's size.
    void AddTo(algorithm::BitMask& mask, algorithm::video::Result const& result, MovingPart part, std::uint32_t margin);

private:
    void AddShapes(algorithm::BitMask& mask, algorithm::BitMask const& foreground, std::uint32_t margin);

    algorithm::BitMask grown_;
    algorithm::BitMask scratch_;
};

}  // namespace qel::privacy_mask
