#include "moving_mask.hpp"

#include <cstdlib>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;
using algorithm::video::Result;

constexpr BitMask::Size Size{70, 20};

bool IsSet(BitMask const& mask, std::size_t x, std::size_t y) {
    return (mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32) & 1) != 0;
}

/// Expects the inclusive box, cut at the border, and nothing else.
void ExpectBox(BitMask const& mask, int x0, int y0, int x1, int y1) {
    for (int y = 0; y < int{Size.height}; ++y) {
        for (int x = 0; x < 32 * 3; ++x) {
            bool const inside = x < int{Size.width} && x >= x0 && x <= x1 && y >= y0 && y <= y1;
            ASSERT_EQ(IsSet(mask, static_cast<std::size_t>(x), static_cast<std::size_t>(y)), inside) << x << ", " << y;
        }
    }
}

TEST(MovingMask, GrowsTheForegroundOnAllSides) {
    for (int const column : {0, 30, 69}) {
        for (unsigned int const margin : {0U, 1U, 5U, 64U}) {
            Result result;
            result.foreground.Resize(Size);
            result.foreground.GetData()[7 * 3 + static_cast<std::size_t>(column) / 32] = 0x80000000U >> column % 32;
            BitMask mask(Size);
            MovingMask().AddTo(mask, result, MovingPart::Shapes, margin);
            int const m = static_cast<int>(margin);
            ExpectBox(mask, column - m, 7 - m, column + m, 7 + m);
        }
    }
}

TEST(MovingMask, KeepsWhatIsMaskedAlreadyAndItsPaddingClear) {
    Result result;
    result.foreground.Resize(Size);
    result.foreground.Fill(1);  // padding as well
    BitMask mask(Size);
    MovingMask().AddTo(mask, result, MovingPart::Shapes, 0);
    ExpectBox(mask, 0, 0, 69, 19);
    result.foreground.Fill(0);
    MovingMask().AddTo(mask, result, MovingPart::Shapes, 3);
    ExpectBox(mask, 0, 0, 69, 19);
}

TEST(MovingMask, GrowsBoxesAndCutsThemAtTheBorder) {
    struct Case {
        geometry::Rectangle<unsigned int> box;
        unsigned int margin;
        int x0, y0, x1, y1;
    };
    unsigned int const most = std::numeric_limits<unsigned int>::max();
    Case const cases[] = {
        {{10, 5, 20, 8}, 0, 10, 5, 19, 7},      {{10, 5, 20, 8}, 2, 8, 3, 21, 9},
        {{0, 0, 70, 20}, 0, 0, 0, 69, 19},      {{60, 15, 70, 20}, 3, 57, 12, 69, 19},
        {{0, 0, most, most}, 64, 0, 0, 69, 19}, {{90, 5, 95, 8}, 2, 1, 1, 0, 0},
        {{72, 5, 75, 8}, 4, 68, 1, 69, 11},     {{20, 5, 10, 8}, 9, 1, 1, 0, 0},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(&c - cases);
        Result result;
        result.objects.push_back({c.box, 1, "motion", 1, {}});
        BitMask mask(Size);
        MovingMask().AddTo(mask, result, MovingPart::Boxes, c.margin);
        ExpectBox(mask, c.x0, c.y0, c.x1, c.y1);
    }
}

TEST(MovingMask, DoesNothingWhenOff) {
    Result result;
    result.objects.push_back({{0, 0, 9, 9}, 1, "motion", 1, {}});
    BitMask mask(Size);
    MovingMask().AddTo(mask, result, MovingPart::None, 5);
    EXPECT_EQ(mask, BitMask(Size));
}

TEST(MovingMask, RefusesShapesThatNobodyFound) {
    Result result;
    BitMask mask(Size);
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { MovingMask().AddTo(mask, result, MovingPart::Shapes, 5); }),
              "Cannot mask what moves: nothing before the mask found out which pixels do (foreground "
              "{\"width\":0,\"height\":0}, frame {\"width\":70,\"height\":20}); run an algorithm such as motion before "
              "it, or set mask_motion to boxes or off");
    EXPECT_NO_THROW(MovingMask().AddTo(mask, result, MovingPart::Boxes, 5));
}

}  // namespace
}  // namespace qel::privacy_mask
