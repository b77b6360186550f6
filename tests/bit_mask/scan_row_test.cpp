#include "bit_mask/scan_row.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

/// The runs in the order they were pushed.
std::vector<Range> Take(std::stack<Range> stack) {
    std::vector<Range> ranges;
    for (; !stack.empty(); stack.pop()) ranges.insert(ranges.begin(), stack.top());
    return ranges;
}

std::vector<Range> ScanPixels(BitMask const& src, BitMask const& dst, unsigned int from, unsigned int to,
                              unsigned int row, bool direction) {
    unsigned int const width = src.GetSize().width;
    unsigned int const low = from > 0 ? from - 1 : 0, high = to < width - 1 ? to + 1 : width - 1;
    std::vector<Range> ranges;
    bool open = false;
    for (unsigned int x = low; x <= high; ++x) {
        bool const fillable = reference::Get(src, x, row) && !reference::Get(dst, x, row);
        if (fillable && !open) ranges.push_back({x, x, row, direction, x == low, false});
        if (fillable) ranges.back().end = x;
        open = fillable;
    }
    if (open) ranges.back().extendRight = 1;
    return ranges;
}

TEST(ScanRow, PushesRunsFromLeftToRightAColumnWiderOnEitherSide) {
    BitMask src({70, 2});
    src.GetData() = {0, 0, 0, 0xFF0000F3U, 0xC0000001U, 0xFFFFFFFFU};
    BitMask const dst({70, 2});
    std::stack<Range> stack;
    ScanRow(src.GetData().data(), dst.GetData().data(), 70, 3, stack, 4, 33, 1, true);
    EXPECT_EQ(Take(stack),
              (std::vector<Range>{
                  {3, 7, 1, true, true, false}, {24, 27, 1, true, false, false}, {30, 33, 1, true, false, false}}));
    stack = {};
    ScanRow(src.GetData().data(), dst.GetData().data(), 70, 3, stack, 64, 69, 1, false);
    EXPECT_EQ(Take(stack), (std::vector<Range>{{63, 69, 1, false, true, true}}));
}

TEST(ScanRow, PushesNothingOfAnEmptySpan) {
    BitMask src({8, 1});
    src.Fill(1);
    BitMask const dst({8, 1});
    std::stack<Range> stack;
    ScanRow(src.GetData().data(), dst.GetData().data(), 8, 1, stack, 7, 3, 0, true);
    EXPECT_TRUE(stack.empty());
}

TEST(ScanRow, GivesTheRunsOfAPixelWalk) {
    std::mt19937 random(53);
    for (int i = 0; i < 20000; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 140), 3};
        BitMask const src = reference::Noise(size, reference::Draw(random, 5, 98), random);
        BitMask const dst = reference::Noise(size, reference::Draw(random, 0, 40), random);
        unsigned int const from = reference::Draw(random, 0, size.width - 1);
        unsigned int const to = reference::Draw(random, from, size.width - 1);
        bool const direction = random() % 2 == 0;
        std::stack<Range> stack;
        ScanRow(src.GetData().data(), dst.GetData().data(), size.width, src.GetStride(), stack, from, to, 1, direction);
        ASSERT_EQ(Take(stack), ScanPixels(src, dst, from, to, 1, direction)) << size << ' ' << from << ' ' << to;
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
