#include "qel/algorithm/bit_mask/flood_fill.hpp"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "reference/flood_fill.hpp"
#include "reference/pixels.hpp"
#include "reference/shapes.hpp"
#include "support/picture.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using support::Picture;

BitMask Fill(BitMask const& src, unsigned int x, unsigned int y) {
    BitMask dst;
    FloodFill8Way(src, dst, {x, y}, 1);
    return dst;
}

TEST(FloodFill8Way, FillsTheRegionOfTheSeed) {
    struct Case {
        char const* name;
        BitMask src;
        unsigned int x, y;
        BitMask filled;
    };
    Case const cases[] = {
        {"two pixels that touch at a corner", Picture({"#.", ".#"}), 0, 0, Picture({"#.", ".#"})},
        {"the other corner", Picture({".#", "#."}), 0, 1, Picture({".#", "#."})},
        {"a seed on background with nothing around", Picture({"...#", "....", "...."}), 1, 1,
         Picture({"....", ".#..", "...."})},
        {"a seed on background beside foreground", Picture({"#...", "...#", "...#"}), 1, 1,
         Picture({"#...", ".#..", "...."})},
        {"both arms of a U from one", Picture({"#.#.", "#.#.", "###.", "...."}), 0, 0,
         Picture({"#.#.", "#.#.", "###.", "...."})},
        {"both arms of an arch from one", Picture({"###", "#.#", "#.#"}), 2, 2, Picture({"###", "#.#", "#.#"})},
        {"from rim to rim", Picture({"####", "####"}), 3, 1, Picture({"####", "####"})},
        {"nothing across a gap", Picture({"##.#", "##.#"}), 0, 0, Picture({"##..", "##.."})},
        {"a single pixel", Picture({"#"}), 0, 0, Picture({"#"})},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Fill(c.src, c.x, c.y), c.filled);
    }
}

TEST(FloodFill8Way, IsBlockedByWhatIsSetInTheDestination) {
    BitMask const src = Picture({"#####", "#####", "#####"});
    BitMask dst = Picture({"..#..", "..#..", "..#.."});
    FloodFill8Way(src, dst, {0, 1}, 1);
    EXPECT_EQ(dst, Picture({"###..", "###..", "###.."}));
    FloodFill8Way(src, dst, {4, 0}, 7);
    EXPECT_EQ(dst, Picture({"#####", "#####", "#####"}));
}

TEST(FloodFill8Way, GoesOnFromASeedThatIsSetInTheDestination) {
    BitMask dst = Picture({".#.", "...", "..#"});
    FloodFill8Way(Picture({"###", "...", "###"}), dst, {1, 0}, 1);
    EXPECT_EQ(dst, Picture({"###", "...", "..#"}));
}

TEST(FloodFill8Way, ClearsADestinationOfAnotherSizeFirst) {
    BitMask const src = Picture({"##.", "...", "..#"});
    for (BitMask::Size const size : {BitMask::Size{3, 4}, {4, 3}, {0, 0}, {100, 100}}) {
        BitMask dst(size);
        dst.Fill(1);
        FloodFill8Way(src, dst, {0, 0}, 1);
        EXPECT_EQ(dst, Picture({"##.", "...", "..."}));
    }
}

TEST(FloodFill8Way, LeavesPaddingAlone) {
    BitMask src({40, 3}), dst({40, 3});
    src.Fill(1);
    FloodFill8Way(src, dst, {39, 1}, 1);
    for (unsigned int y = 0; y < 3; ++y) {
        for (unsigned int x = 0; x < 64; ++x) EXPECT_EQ(reference::Get(dst, x, y), x < 40);
    }
}

TEST(FloodFill8Way, EndsOutsideItsContract) {
    BitMask const src = Picture({"##", "##"});
    BitMask dst = Picture({"##", ".#"});
    FloodFill8Way(src, dst, {0, 0}, 0);
    EXPECT_EQ(dst, Picture({".#", ".#"}));
    FloodFill8Way(src, dst, {2, 0}, 1);
    FloodFill8Way(src, dst, {0, 2}, 1);
    FloodFill8Way(src, dst, {~0U, ~0U}, 1);
    EXPECT_EQ(dst, Picture({".#", ".#"}));
    FloodFill8Way(BitMask(), dst, {0, 0}, 1);
    EXPECT_EQ(dst, BitMask());
    FloodFill8Way(BitMask({0, 4}), dst, {0, 0}, 1);
    EXPECT_EQ(dst, BitMask({0, 4}));
}

TEST(FloodFill8Way, KeepsToTheRowsThatShorterStoresHold) {
    BitMask src({32, 4}), dst({32, 4});
    src.Fill(1);
    src.GetData().resize(2);
    FloodFill8Way(src, dst, {3, 0}, 1);
    EXPECT_EQ(dst.GetData(), (std::vector<std::uint32_t>{~0U, ~0U, 0, 0}));
    FloodFill8Way(src, dst, {3, 3}, 1);
    dst.GetData().resize(1);
    FloodFill8Way(src, dst, {3, 1}, 1);
    EXPECT_EQ(dst.GetData(), std::vector<std::uint32_t>{~0U});
}

TEST(FloodFill8Way, FillsNothingButTheSeedFromAMaskIntoItself) {
    BitMask mask = Picture({"##.", "##."});
    FloodFill8Way(mask, mask, {2, 1}, 1);
    EXPECT_EQ(mask, Picture({"##.", "###"}));
}

TEST(FloodFill8Way, GivesTheDefinitionOnNoise) {
    std::mt19937 random(51);
    for (int i = 0; i < 6000; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 200), reference::Draw(random, 1, 40)};
        BitMask const src = reference::Noise(size, reference::Draw(random, 1, 99), random);
        BitMask dst = random() % 2 == 0 ? BitMask() : reference::Noise(size, reference::Draw(random, 0, 30), random);
        geometry::Point<unsigned int, 2> const seed{reference::Draw(random, 0, size.width - 1),
                                                    reference::Draw(random, 0, size.height - 1)};
        BitMask const expected = reference::FloodFill8Way(src, dst, seed);
        FloodFill8Way(src, dst, seed, 1);
        ASSERT_EQ(dst, expected) << size << ' ' << seed.x << ' ' << seed.y;
    }
}

TEST(FloodFill8Way, GivesTheDefinitionForRegionsAsWideAsAWindow) {
    // Grown in 64 columns, of which the first stands at a word's; wider ones are begun anew.
    std::mt19937 random(58);
    for (int i = 0; i < 4000; ++i) {
        BitMask::Size const size{reference::Draw(random, 33, 260), reference::Draw(random, 1, 60)};
        unsigned int const width = reference::Draw(random, 1, 70), left = reference::Draw(random, 0, size.width - 1);
        unsigned int const grainX = reference::Draw(random, 1, 3), grainY = reference::Draw(random, 1, 6);
        BitMask const grains = reference::Noise(size, reference::Draw(random, 40, 99), random);
        BitMask const src = reference::Draw(size, random, [&](unsigned int x, unsigned int y) {
            return x >= left && x < left + width && reference::Get(grains, x / grainX, y / grainY);
        });
        BitMask dst = i % 2 == 0 ? BitMask() : reference::Noise(size, 3, random);
        geometry::Point<unsigned int, 2> const seed{std::min(left + width / 2, size.width - 1),
                                                    reference::Draw(random, 0, size.height - 1)};
        BitMask const expected = reference::FloodFill8Way(src, dst, seed);
        FloodFill8Way(src, dst, seed, 1);
        ASSERT_EQ(dst, expected) << size << ' ' << seed.x << ' ' << seed.y;
    }
}

TEST(FloodFill8Way, GivesTheDefinitionForRaggedBodies) {
    // Too wide for 64 columns they are grown in 128 or 256, in masks that have as many.
    std::mt19937 random(62);
    for (int i = 0; i < 400; ++i) {
        BitMask::Size const size{reference::Draw(random, 60, 420), reference::Draw(random, 40, 220)};
        double const centreX = reference::Draw(random, 0, size.width - 1), centreY = size.height / 2.0;
        double const radiusX = reference::Draw(random, 20, 140), radiusY = reference::Draw(random, 20, 130);
        double const core = reference::Draw(random, 0, 9) / 10.0;
        BitMask const src = reference::Draw(size, random, [&](unsigned int x, unsigned int y) {
            double const distance = std::hypot((x - centreX) / radiusX, (y - centreY) / radiusY);
            double const chance = distance < core ? 0.98 : (1.0 - distance) / (1.0 - core);
            return reference::Draw(random, 0, 999) < 1000 * chance;
        });
        BitMask dst = i % 4 == 0 ? reference::Noise(size, 1, random) : BitMask();
        // Somewhere down the middle.
        geometry::Point<unsigned int, 2> seed{static_cast<unsigned int>(centreX), reference::Draw(random, 0, 39)};
        while (seed.y + 1 < size.height && !reference::Get(src, seed.x, seed.y)) ++seed.y;
        BitMask const expected = reference::FloodFill8Way(src, dst, seed);
        FloodFill8Way(src, dst, seed, 1);
        ASSERT_EQ(dst, expected) << size << ' ' << seed.x << ' ' << seed.y;
    }
}

TEST(FloodFill8Way, GivesTheDefinitionForWindingsInAWindow) {
    // Down and up in turn would have to go on for each of the legs.
    for (unsigned int const legs : {5U, 20U, 40U, 90U}) {
        BitMask src({320, 50});
        for (unsigned int leg = 0; leg < legs; ++leg) {
            for (unsigned int y = 0; y < 50; ++y) reference::Set(src, 100 + 2 * leg, y, true);
            reference::Set(src, 101 + 2 * leg, leg % 2 == 0 ? 49 : 0, true);
        }
        EXPECT_EQ(Fill(src, 100, 20), reference::FloodFill8Way(src, BitMask(), {100, 20})) << legs;
    }
}

TEST(FloodFill8Way, GivesTheDefinitionOnLargeNoise) {
    // Regions of thousands of runs: these are grown by whole rows.
    std::mt19937 random(56);
    for (int i = 0; i < 60; ++i) {
        BitMask::Size const size{reference::Draw(random, 200, 700), reference::Draw(random, 60, 200)};
        unsigned int const grain = reference::Draw(random, 1, 4);
        BitMask const grains = reference::Noise(size, reference::Draw(random, 40, 95), random);
        BitMask const src = reference::Draw(
            size, random, [&](unsigned int x, unsigned int y) { return reference::Get(grains, x / grain, y / grain); });
        BitMask dst = i % 2 == 0 ? BitMask() : reference::Noise(size, 3, random);
        geometry::Point<unsigned int, 2> const seed{size.width / 2, size.height / 2};
        BitMask const expected = reference::FloodFill8Way(src, dst, seed);
        FloodFill8Way(src, dst, seed, 1);
        ASSERT_EQ(dst, expected) << size << ", grain " << grain;
    }
}

/// Fills from the middle of a mask made of blocks of width x height pixels, some pixels of which differ.
void CompareOnBlocks(BitMask::Size size, unsigned int width, unsigned int height, int round, std::mt19937& random) {
    BitMask const blocks = reference::Noise(size, reference::Draw(random, 40, 75), random);
    BitMask const specks = reference::Noise(size, round % 3 == 0 ? 1 : 0, random);
    BitMask const src = reference::Draw(size, random, [&](unsigned int x, unsigned int y) {
        return reference::Get(blocks, x / width, y / height) != reference::Get(specks, x, y);
    });
    BitMask dst = round % 2 == 0 ? BitMask() : reference::Noise(size, 1, random);
    geometry::Point<unsigned int, 2> const seed{size.width / 2, size.height / 2};
    BitMask const expected = reference::FloodFill8Way(src, dst, seed);
    FloodFill8Way(src, dst, seed, 1);
    ASSERT_EQ(dst, expected) << size << ", blocks " << width << " x " << height;
}

TEST(FloodFill8Way, GivesTheDefinitionOnBlocks) {
    // Runs keep their ends over the height of a block, but where a pixel differs or the destination holds some.
    std::mt19937 random(59);
    for (int i = 0; i < 300 && !HasFatalFailure(); ++i) {
        BitMask::Size const size{reference::Draw(random, 80, 900), reference::Draw(random, 1, 90)};
        unsigned int const width = reference::Draw(random, 2, 120), height = reference::Draw(random, 2, 40);
        CompareOnBlocks(size, width, height, i, random);
    }
}

TEST(FloodFill8Way, GivesTheDefinitionOnLowBlocks) {
    // Too low to be filled each by itself: grown by whole rows, of which many have the same runs as a neighbour.
    std::mt19937 random(61);
    for (int i = 0; i < 40 && !HasFatalFailure(); ++i) {
        BitMask::Size const size{reference::Draw(random, 500, 1000), reference::Draw(random, 60, 200)};
        unsigned int const width = reference::Draw(random, 1, 9), height = reference::Draw(random, 2, 6);
        CompareOnBlocks(size, width, height, i, random);
    }
}

TEST(FloodFill8Way, GivesTheDefinitionWhereNoiseOpensIntoWindings) {
    // Begun by whole rows, which stop gaining, and finished by runs.
    std::mt19937 random(57);
    for (reference::Shape const& shape : reference::Shapes()) {
        SCOPED_TRACE(shape.name);
        BitMask::Size const size{reference::Draw(random, 400, 600), reference::Draw(random, 80, 140)};
        BitMask src = shape.make(size, random);
        BitMask const noise = reference::Noise(size, 65, random);
        for (unsigned int y = 20; y < size.height; ++y) {
            for (unsigned int x = 0; x < size.width / 2; ++x) reference::Set(src, x, y, reference::Get(noise, x, y));
        }
        ASSERT_EQ(Fill(src, 50, 50), reference::FloodFill8Way(src, BitMask(), {50, 50}));
    }
}

TEST(FloodFill8Way, GivesTheDefinitionOnShapes) {
    std::mt19937 random(52);
    for (reference::Shape const& shape : reference::Shapes()) {
        SCOPED_TRACE(shape.name);
        for (int i = 0; i < 60; ++i) {
            BitMask::Size const size{reference::Draw(random, 1, 300), reference::Draw(random, 1, 60)};
            BitMask src = shape.make(size, random);
            if (i % 2 == 0) {
                for (auto& word : src.GetData()) {
                    word ^= static_cast<std::uint32_t>(random() & random() & random() & random());
                }
            }
            geometry::Point<unsigned int, 2> const seed{reference::Draw(random, 0, size.width - 1),
                                                        reference::Draw(random, 0, size.height - 1)};
            ASSERT_EQ(Fill(src, seed.x, seed.y), reference::FloodFill8Way(src, BitMask(), seed)) << size;
        }
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
