#include "mask_runs.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;

bool IsSet(BitMask const& mask, std::size_t x, std::size_t y) {
    return (mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32) & 1) != 0;
}

/// A mask of random pixels, with runs of the given mean length.
BitMask Random(BitMask::Size size, unsigned int length, std::mt19937& random) {
    BitMask mask(size);
    bool on = false;
    for (std::size_t y = 0; y < size.height; ++y) {
        for (std::size_t x = 0; x < size.width; ++x) {
            if (random() % length == 0) on = !on;
            if (on) mask.GetData()[y * mask.GetStride() + x / 32] |= 0x80000000U >> x % 32;
        }
    }
    return mask;
}

constexpr BitMask::Size Sizes[] = {{1, 1}, {31, 3}, {32, 2}, {33, 5}, {63, 1}, {64, 4}, {65, 7}, {130, 9}};

TEST(FindRuns, GivesTheLongestRunsRowByRow) {
    std::mt19937 random(5);
    std::vector<PixelRun> runs{{9, 9, 9}};
    for (unsigned int length : {1U, 2U, 7U, 40U, 200U}) {
        for (BitMask::Size const size : Sizes) {
            BitMask const mask = Random(size, length, random);
            std::vector<PixelRun> expected;
            for (unsigned int y = 0; y < size.height; ++y) {
                for (unsigned int x = 0; x < size.width; ++x) {
                    if (!IsSet(mask, x, y)) continue;
                    if (x == 0 || !IsSet(mask, x - 1, y)) expected.push_back({y, x, x});
                    expected.back().last = x + 1;
                }
            }
            FindRuns(mask, runs);
            ASSERT_EQ(runs, expected);
        }
    }
    FindRuns(BitMask(), runs);
    EXPECT_TRUE(runs.empty());
}

TEST(Halve, SetsAPixelWhereAnyOfItsFourIs) {
    std::mt19937 random(6);
    BitMask half({500, 3});
    half.Fill(1);
    for (unsigned int length : {1U, 2U, 7U, 40U}) {
        for (BitMask::Size const size : Sizes) {
            BitMask const mask = Random(size, length, random);
            BitMask expected({(size.width + 1) / 2, (size.height + 1) / 2});
            for (std::size_t y = 0; y < size.height; ++y) {
                for (std::size_t x = 0; x < size.width; ++x) {
                    if (IsSet(mask, x, y)) {
                        expected.GetData()[y / 2 * expected.GetStride() + x / 64] |= 0x80000000U >> x / 2 % 32;
                    }
                }
            }
            Halve(mask, half);
            ASSERT_EQ(half, expected);
        }
    }
}

}  // namespace
}  // namespace qel::privacy_mask
