#pragma once

#include "plugins/painted_frame.hpp"

namespace qel::classifier {

using media::ColourFormat;

/// A painted frame with a gap between its rows.
class TestFrame : public test::PaintedFrame {
public:
    TestFrame(ColourFormat format, unsigned int width, unsigned int height) : PaintedFrame(format, width, height, 7) {}
};

inline constexpr TestFrame::Rgb Red{230, 20, 20}, Green{20, 230, 20}, Blue{20, 20, 230};

}  // namespace qel::classifier
