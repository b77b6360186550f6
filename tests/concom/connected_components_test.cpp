#include "qel/algorithm/connected_components.hpp"

#include <new>
#include <random>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference/connected_components.hpp"
#include "reference/pixels.hpp"
#include "reference/shapes.hpp"
#include "support/allocations.hpp"
#include "support/picture.hpp"

namespace qel::algorithm {
namespace {

using Blob = ConnectedComponents::Blob;
using Blobs = std::vector<Blob>;

static_assert(!std::is_copy_constructible_v<ConnectedComponents> && !std::is_copy_assignable_v<ConnectedComponents>);
static_assert(std::is_nothrow_move_constructible_v<ConnectedComponents>);
static_assert(std::is_nothrow_swappable_v<ConnectedComponents>);

/// Its padding is set: it must not matter.
BitMask Picture(std::vector<std::string_view> const& rows) { return support::Picture(rows, true); }

Blobs Connect8Way(BitMask const& mask, unsigned int min_area = 0) {
    Blobs blobs;
    std::size_t const count = ConnectedComponents().Connect8Way(mask, min_area, blobs);
    EXPECT_EQ(count, blobs.size());
    return blobs;
}

Blobs Connect4Way(BitMask const& mask, unsigned int min_area = 0) {
    Blobs blobs;
    std::size_t const count = ConnectedComponents().Connect4Way(mask, min_area, blobs);
    EXPECT_EQ(count, blobs.size());
    return blobs;
}

class Random : public testing::Test {
protected:
    /// Labels the mask with the kept object both ways and compares with the reference.
    void Compare(BitMask const& mask, unsigned int min_area) {
        std::size_t count = labeller_.Connect8Way(mask, min_area, blobs_);
        ASSERT_EQ(count, blobs_.size());
        ASSERT_EQ(blobs_, reference_.Connect8Way(mask, min_area)) << "8-way, " << mask.GetSize();
        count = labeller_.Connect4Way(mask, min_area, blobs_);
        ASSERT_EQ(count, blobs_.size());
        ASSERT_EQ(blobs_, reference_.Connect4Way(mask, min_area)) << "4-way, " << mask.GetSize();
    }

    unsigned int MinArea() { return random_() % 2 == 0 ? 0 : reference::Draw(random_, 1, 20); }

    std::mt19937 random_{41};

private:
    ConnectedComponents labeller_;
    reference::PixelLabeller reference_;
    Blobs blobs_;
};

constexpr unsigned int Widths[] = {1, 2, 31, 32, 33, 63, 64, 65, 95, 97, 127, 128, 129, 200};

TEST_F(Random, NoiseOfEveryDensityGivesTheReference) {
    for (unsigned int percent = 1; percent <= 99; ++percent) {
        for (unsigned int const width : Widths) {
            for (int i = 0; i < 3; ++i) {
                BitMask const mask = reference::Noise({width, reference::Draw(random_, 1, 40)}, percent, random_);
                ASSERT_NO_FATAL_FAILURE(Compare(mask, MinArea())) << percent << " %";
            }
        }
    }
}

TEST_F(Random, ManySmallMasksGiveTheReference) {
    for (int i = 0; i < 40000; ++i) {
        BitMask::Size const size{reference::Draw(random_, 1, 12), reference::Draw(random_, 1, 8)};
        ASSERT_NO_FATAL_FAILURE(Compare(reference::Noise(size, reference::Draw(random_, 20, 80), random_), MinArea()));
    }
}

TEST_F(Random, CoarseNoiseGivesTheReference) {
    for (int i = 0; i < 1500; ++i) {
        BitMask::Size const size{reference::Draw(random_, 1, 140), reference::Draw(random_, 1, 40)};
        unsigned int const grainX = reference::Draw(random_, 1, 9), grainY = reference::Draw(random_, 1, 5);
        BitMask const grains = reference::Noise({size.width, size.height}, reference::Draw(random_, 10, 90), random_);
        BitMask const mask = reference::Draw(size, random_, [&](unsigned int x, unsigned int y) {
            return reference::Get(grains, x / grainX, y / grainY);
        });
        ASSERT_NO_FATAL_FAILURE(Compare(mask, MinArea()));
    }
}

TEST_F(Random, ShapesOfEverySizeGiveTheReference) {
    for (reference::Shape const& shape : reference::Shapes()) {
        SCOPED_TRACE(shape.name);
        for (unsigned int const width : Widths) {
            for (unsigned int const height : {1U, 2U, 3U, 7U, 40U}) {
                ASSERT_NO_FATAL_FAILURE(Compare(shape.make({width, height}, random_), MinArea()));
            }
        }
    }
}

TEST_F(Random, ShapesWithNoiseGiveTheReference) {
    for (reference::Shape const& shape : reference::Shapes()) {
        SCOPED_TRACE(shape.name);
        for (int i = 0; i < 60; ++i) {
            BitMask::Size const size{reference::Draw(random_, 1, 140), reference::Draw(random_, 1, 40)};
            BitMask mask = shape.make(size, random_);
            for (std::uint32_t& word : mask.GetData())
                word ^= static_cast<std::uint32_t>(random_() & random_() & random_());
            ASSERT_NO_FATAL_FAILURE(Compare(mask, MinArea()));
        }
    }
}

TEST(ConnectedComponents, FindsNothingInAnEmptyMask) {
    for (BitMask::Size const size : {BitMask::Size{0, 0}, {0, 5}, {5, 0}, {~0U, 3}, {64, 3}}) {
        Blobs blobs(3);
        ConnectedComponents labeller;
        EXPECT_EQ(labeller.Connect8Way(BitMask(size), 0, blobs), 0U);
        EXPECT_TRUE(blobs.empty());
        blobs.resize(3);
        EXPECT_EQ(labeller.Connect4Way(BitMask(size), 0, blobs), 0U);
        EXPECT_TRUE(blobs.empty());
    }
}

TEST(ConnectedComponents, DoesNotReadPadding) {
    BitMask mask({33, 4});
    mask.Fill(1);
    for (unsigned int y = 0; y < 4; ++y) {
        for (unsigned int x = 0; x < 33; ++x) reference::Set(mask, x, y, false);
    }
    EXPECT_EQ(Connect8Way(mask), Blobs());
    EXPECT_EQ(Connect4Way(mask), Blobs());
}

TEST(ConnectedComponents, JoinsDiagonalPixels8WayOnly) {
    for (auto const& rows : {std::vector<std::string_view>{"#.", ".#"}, {".#", "#."}}) {
        unsigned int const first = rows[0][0] == '#' ? 0 : 1;
        EXPECT_EQ(Connect8Way(Picture(rows)), (Blobs{{2, 0, 0, 1, 1, first, 0}}));
        EXPECT_EQ(Connect4Way(Picture(rows)),
                  (Blobs{{1, first, 0, first, 0, first, 0}, {1, 1 - first, 1, 1 - first, 1, 1 - first, 1}}));
    }
}

TEST(ConnectedComponents, JoinsTheArmsOfAUIntoTheOlder) {
    BitMask const mask = Picture({"....#.",  //
                                  ".#..#.",  //
                                  ".#..#.",  //
                                  ".####."});
    Blobs const blobs{{9, 1, 0, 4, 3, 4, 0}};
    EXPECT_EQ(Connect8Way(mask), blobs);
    EXPECT_EQ(Connect4Way(mask), blobs);
}

TEST(ConnectedComponents, GivesBlobsInRasterOrderOfTheirFirstPixels) {
    BitMask const mask = Picture({"...#..#",  //
                                  "#..#...",  //
                                  "#.....#"});
    Blobs const blobs{{2, 3, 0, 3, 1, 3, 0}, {1, 6, 0, 6, 0, 6, 0}, {2, 0, 1, 0, 2, 0, 1}, {1, 6, 2, 6, 2, 6, 2}};
    EXPECT_EQ(Connect8Way(mask), blobs);
    EXPECT_EQ(Connect4Way(mask), blobs);
}

TEST(ConnectedComponents, DoesNotCountPixelsThatInheritAMergedLabel) {
    // Row 1 starts a label of its own, which is merged into the older one further right; below its first column only
    // the merged label can be seen, and the two pixels there are counted on it. The box has them.
    BitMask const mask = Picture({"...#",  //
                                  "####",  //
                                  "#...",  //
                                  "#..."});
    EXPECT_EQ(Connect8Way(mask), (Blobs{{5, 0, 0, 3, 3, 3, 0}}));
    EXPECT_EQ(Connect4Way(mask), (Blobs{{5, 0, 0, 3, 3, 3, 0}}));
}

TEST(ConnectedComponents, CountsAgainOnceARowMeetsAnotherLabel) {
    // At column 1 of row 2 the surviving label comes into view, diagonally: only 8-way.
    BitMask const mask = Picture({"..#",  //
                                  "###",  //
                                  "#..",  //
                                  "#.."});
    EXPECT_EQ(Connect8Way(mask), (Blobs{{6, 0, 0, 2, 3, 2, 0}}));
    EXPECT_EQ(Connect4Way(mask), (Blobs{{4, 0, 0, 2, 3, 2, 0}}));
}

TEST(ConnectedComponents, DropsBlobsBelowTheMinimumArea) {
    BitMask const mask = Picture({"#.##.###", "........", "####...."});
    EXPECT_EQ(Connect8Way(mask, 0).size(), 4U);
    EXPECT_EQ(Connect8Way(mask, 1).size(), 4U);
    EXPECT_EQ(Connect8Way(mask, 2).size(), 3U);
    EXPECT_EQ(Connect8Way(mask, 3), (Blobs{{3, 5, 0, 7, 0, 5, 0}, {4, 0, 2, 3, 2, 0, 2}}));
    EXPECT_EQ(Connect4Way(mask, 4), (Blobs{{4, 0, 2, 3, 2, 0, 2}}));
    EXPECT_TRUE(Connect8Way(mask, 5).empty());
    EXPECT_TRUE(Connect8Way(mask, ~0U).empty());
}

TEST(ConnectedComponents, MeasuresAreasAsItCountsThemAgainstTheMinimum) {
    BitMask const mask = Picture({"..#", "###", "#..", "#.."});
    EXPECT_EQ(Connect4Way(mask, 4).size(), 1U);
    EXPECT_TRUE(Connect4Way(mask, 5).empty());
}

TEST(ConnectedComponents, ReplacesTheOutputAndRepeatsItself) {
    std::mt19937 random(42);
    BitMask const mask = reference::Noise({100, 40}, 40, random);
    ConnectedComponents labeller;
    Blobs blobs(5, Blob{9, 9, 9, 9, 9, 9, 9});
    labeller.Connect8Way(mask, 2, blobs);
    Blobs const first(blobs);
    labeller.Connect8Way(BitMask({300, 7}), 2, blobs);
    EXPECT_TRUE(blobs.empty());
    labeller.Connect8Way(mask, 2, blobs);
    EXPECT_EQ(blobs, first);
}

TEST(ConnectedComponents, ReadsOnlyTheRowsThatAShorterStoreHolds) {
    BitMask mask({64, 4});
    mask.Fill(1);
    mask.GetData().resize(5);
    EXPECT_EQ(Connect8Way(mask), (Blobs{{128, 0, 0, 63, 1, 0, 0}}));
}

TEST(ConnectedComponents, AllocatesNothingForAnotherMaskOfTheSize) {
    std::mt19937 random(43);
    BitMask const mask = reference::Noise({333, 100}, 30, random);
    ConnectedComponents labeller;
    Blobs blobs;
    labeller.Connect8Way(mask, 0, blobs);
    labeller.Connect4Way(mask, 0, blobs);
    std::size_t const before = support::CountAllocations();
    labeller.Connect8Way(mask, 0, blobs);
    labeller.Connect4Way(mask, 0, blobs);
    labeller.Connect8Way(mask, 5, blobs);
    EXPECT_EQ(support::CountAllocations(), before);
}

TEST(ConnectedComponents, NeedsMemoryForTheBlobsThereAreNotForThePixels) {
    BitMask mask({3840, 2160});
    reference::Set(mask, 7, 7);
    std::size_t const before = support::CountAllocatedBytes();
    Blobs blobs;
    ConnectedComponents labeller;
    labeller.Connect8Way(mask, 0, blobs);
    EXPECT_EQ(blobs, (Blobs{{1, 7, 7, 7, 7, 7, 7}}));
    EXPECT_LT(support::CountAllocatedBytes() - before, 80U * 3840U);
}

TEST(ConnectedComponents, WorksOnAfterAnAllocationFailedAnywhere) {
    std::mt19937 random(44);
    BitMask const mask = reference::Noise({200, 60}, 30, random);
    Blobs const expected = Connect8Way(mask);
    std::size_t failures = 0;
    for (bool done = false; !done; ++failures) {
        ConnectedComponents labeller;
        Blobs blobs;
        try {
            support::FailingAllocations const failing(failures);
            labeller.Connect8Way(mask, 0, blobs);
            done = true;
        } catch (std::bad_alloc const&) {
            labeller.Connect8Way(mask, 0, blobs);
        }
        ASSERT_EQ(blobs, expected);
    }
    EXPECT_GT(failures, 5U);
}

TEST(ConnectedComponents, MovesAndSwaps) {
    BitMask const mask = Picture({"##", ".."});
    Blobs blobs;
    ConnectedComponents a;
    ConnectedComponents b(std::move(a));
    EXPECT_EQ(b.Connect8Way(mask, 0, blobs), 1U);
    // NOLINTBEGIN(bugprone-use-after-move): what an object that was moved from does is the point
    EXPECT_THAT([&] { a.Connect8Way(mask, 0, blobs); }, testing::ThrowsMessage<std::logic_error>("Pimpl is null"));
    EXPECT_THAT([&] { a.Connect4Way(mask, 0, blobs); }, testing::ThrowsMessage<std::logic_error>("Pimpl is null"));
    swap(a, b);
    EXPECT_EQ(a.Connect4Way(mask, 0, blobs), 1U);
    EXPECT_THROW(b.Connect8Way(mask, 0, blobs), std::logic_error);
    b = std::move(a);
    EXPECT_EQ(b.Connect8Way(mask, 0, blobs), 1U);
    EXPECT_THROW(a.Connect8Way(mask, 0, blobs), std::logic_error);
    a = ConnectedComponents();
    EXPECT_EQ(a.Connect8Way(mask, 0, blobs), 1U);
    ConnectedComponents& same = a;
    algorithm::swap(a, same);
    a = std::move(same);
    EXPECT_EQ(a.Connect8Way(mask, 0, blobs), 1U);
    // NOLINTEND(bugprone-use-after-move)
}

}  // namespace
}  // namespace qel::algorithm
