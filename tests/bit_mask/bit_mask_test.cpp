#include "qel/algorithm/bit_mask.hpp"

#include <algorithm>
#include <limits>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference/erase_rect.hpp"
#include "reference/pixels.hpp"
#include "support/allocations.hpp"

namespace qel::algorithm {
namespace {

using Words = std::vector<std::uint32_t>;
constexpr std::uint32_t Ones = ~0U;

TEST(BitMask, StartsEmpty) {
    BitMask const mask;
    EXPECT_EQ(mask.GetSize(), (BitMask::Size{0, 0}));
    EXPECT_EQ(mask.GetStride(), 0U);
    EXPECT_TRUE(mask.GetData().empty());
}

TEST(BitMask, HasZeroedRowsOfWholeWords) {
    struct Case {
        BitMask::Size size;
        std::size_t stride, words;
    };
    constexpr Case Cases[] = {{{1, 1}, 1, 1},  {{31, 2}, 1, 2}, {{32, 3}, 1, 3},     {{33, 4}, 2, 8},
                              {{64, 4}, 2, 8}, {{65, 2}, 3, 6}, {{0, 7}, 0, 0},      {{7, 0}, 1, 0},
                              {{96, 1}, 3, 3}, {{97, 1}, 4, 4}, {{1920, 2}, 60, 120}};
    for (Case const& c : Cases) {
        SCOPED_TRACE(testing::Message() << c.size);
        BitMask const mask(c.size);
        EXPECT_EQ(mask.GetSize(), c.size);
        EXPECT_EQ(mask.GetStride(), c.stride);
        EXPECT_EQ(mask.GetData(), Words(c.words, 0));
    }
}

TEST(BitMask, CountsItsStrideIn32Bits) {
    BitMask const mask({Ones, 1});
    EXPECT_EQ(mask.GetStride(), 0U);
    EXPECT_TRUE(mask.GetData().empty());
}

TEST(BitMask, HoldsThePixel32OfA33WideRowInBit31OfItsSecondWord) {
    BitMask mask({33, 2});
    reference::Set(mask, 32, 1);
    EXPECT_EQ(mask.GetData(), (Words{0, 0, 0, 0x80000000U}));
}

TEST(BitMask, IsClearedByResizing) {
    BitMask mask({40, 2});
    mask.Fill(1);
    mask.Resize({64, 1});
    EXPECT_EQ(mask, BitMask({64, 1}));
    mask.Fill(1);
    mask.Resize({10, 3});
    EXPECT_EQ(mask, BitMask({10, 3}));
}

TEST(BitMask, KeepsItsSizeWhenItCannotGrow) {
    BitMask mask({40, 2});
    mask.Fill(1);
    {
        support::FailingAllocations const failing(0);
        EXPECT_THROW(mask.Resize({400, 20}), std::bad_alloc);
    }
    EXPECT_EQ(mask.GetSize(), (BitMask::Size{40, 2}));
    EXPECT_EQ(mask.GetData(), Words(4, Ones));
}

TEST(BitMask, CopiesAndMovesItsPixels) {
    BitMask mask({40, 2});
    mask.Fill(1);
    BitMask copy(mask);
    EXPECT_EQ(copy, mask);
    copy.Fill(0);
    EXPECT_NE(copy, mask);
    BitMask const moved(std::move(mask));
    EXPECT_EQ(moved.GetData(), Words(4, Ones));
    EXPECT_EQ(mask, BitMask());  // NOLINT(bugprone-use-after-move): a mask moved from is empty
    mask = moved;
    EXPECT_EQ(mask, moved);
    BitMask& same = mask;
    mask = same;
    EXPECT_EQ(mask, moved);
    copy = std::move(mask);
    EXPECT_EQ(copy, moved);
}

TEST(BitMask, DiffersBySizeEvenWithTheSameWords) { EXPECT_NE(BitMask({33, 1}), BitMask({34, 1})); }

TEST(BitMaskFill, WritesEveryBitPaddingIncluded) {
    BitMask mask({33, 2});
    mask.Fill(7);
    EXPECT_EQ(mask.GetData(), Words(4, Ones));
    mask.Fill(0);
    EXPECT_EQ(mask.GetData(), Words(4, 0));
}

TEST(BitMaskFill, LeavesAnEmptyMaskEmpty) {
    BitMask mask;
    mask.Fill(1);
    EXPECT_EQ(mask, BitMask());
}

TEST(BitMaskEraseRect, WritesWholeWordsAndNeverTheLastRow) {
    struct Case {
        char const* name;
        BitMask::Size size;
        geometry::Rectangle<int> rect;
        Words after;
    };
    Case const cases[] = {
        {"the whole mask but for its last row", {64, 4}, {0, 0, 64, 4}, {Ones, Ones, Ones, Ones, Ones, Ones, 0, 0}},
        {"one column writes its whole word", {64, 3}, {5, 0, 6, 2}, {Ones, 0, Ones, 0, 0, 0}},
        {"two columns across a word edge write both words", {64, 2}, {31, 0, 33, 1}, {Ones, Ones, 0, 0}},
        {"negative corners are cut to 0", {64, 2}, {-100, -7, 1, 1}, {Ones, 0, 0, 0}},
        {"the last column alone is cut away, its word is written", {64, 2}, {63, 0, 64, 1}, {0, Ones, 0, 0}},
        {"the last column alone in a word of its own is not reached", {65, 2}, {40, 0, 65, 1}, {0, Ones, 0, 0, 0, 0}},
        {"a single row is never written", {64, 1}, {0, 0, 64, 1}, {0, 0}},
        {"corners in the wrong order have no rows", {64, 16}, {10, 10, 2, 2}, Words(32, 0)},
        {"the last row is not reached from itself", {64, 2}, {0, 1, 64, 2}, Words(4, 0)},
        {"rows below the mask are not reached", {64, 2}, {0, 5, 64, 9}, Words(4, 0)},
        {"no columns at 40: the word is written", {64, 2}, {40, 0, 40, 1}, {0, Ones, 0, 0}},
        {"no columns at 32: nothing is written", {64, 2}, {32, 0, 32, 1}, Words(4, 0)},
        {"no columns at 0: everything from the first row on", {64, 3}, {0, 1, 0, 2}, {0, 0, Ones, Ones, Ones, Ones}},
        {"columns right of the row spill into the next", {64, 3}, {70, 0, 71, 1}, {0, 0, Ones, 0, 0, 0}},
        {"columns right of the store are not there", {64, 3}, {1000, 0, 1001, 2}, Words(6, 0)},
        {"a mask one column wide has no columns but 0", {1, 3}, {-3, 0, 5, 1}, Words(3, Ones)},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        BitMask mask(c.size);
        mask.EraseRect(c.rect, 2);
        EXPECT_EQ(mask.GetData(), c.after);
        mask.Fill(1);
        mask.EraseRect(c.rect, 0);
        Words inverted(c.after);
        for (std::uint32_t& word : inverted) word = ~word;
        EXPECT_EQ(mask.GetData(), inverted);
    }
}

TEST(BitMaskEraseRect, OrdersUnsignedCornersAsSignedNumbers) {
    BitMask ordered({64, 16}), mixed({64, 16}), crossed({64, 16}), negative({64, 16});
    ordered.EraseRect(geometry::Rectangle<int>{2, 2, 10, 10}, 1);
    EXPECT_TRUE(reference::Get(ordered, 0, 2));
    mixed.EraseRect(geometry::Rectangle<unsigned int>{10, 10, 2, 2}, 1);
    EXPECT_EQ(mixed, ordered);
    crossed.EraseRect(geometry::Rectangle<unsigned int>{2, 10, 10, 2}, 1);
    EXPECT_EQ(crossed, ordered);
    negative.EraseRect(geometry::Rectangle<unsigned int>{10, 10, static_cast<unsigned int>(-2), 2}, 1);
    EXPECT_EQ(negative, ordered);
}

TEST(BitMaskEraseRect, NeverWritesAMaskWithoutWords) {
    constexpr int Least = std::numeric_limits<int>::min();
    constexpr int Most = std::numeric_limits<int>::max();
    for (BitMask::Size const size : {BitMask::Size{0, 0}, {0, 5}, {5, 0}, {Ones, 3}}) {
        BitMask mask(size);
        mask.EraseRect(geometry::Rectangle<int>{-4, -4, 4, 4}, 1);
        mask.EraseRect(geometry::Rectangle<int>{Least, Least, Most, Most}, 1);
        mask.EraseRect(geometry::Rectangle<unsigned int>{0, 0, Ones, Ones}, 1);
        EXPECT_TRUE(mask.GetData().empty());
    }
}

TEST(BitMaskEraseRect, WritesOnlyWhatAStoreMadeShorterHolds) {
    BitMask mask({64, 4});
    mask.GetData().resize(3);
    mask.EraseRect(geometry::Rectangle<int>{0, 0, 64, 4}, 1);
    EXPECT_EQ(mask.GetData(), Words(3, Ones));
}

TEST(BitMaskEraseRect, FollowsTheStepsOnRandomRectangles) {
    std::mt19937 random(11);
    constexpr int Corners[] = {std::numeric_limits<int>::min(), -40, -1, 0, 1, 31, 32, 33, 63, 64, 65, 90, 1000,
                               std::numeric_limits<int>::max()};
    auto const corner = [&](unsigned int extent) {
        if (random() % 3 == 0) return Corners[random() % std::size(Corners)];
        return static_cast<int>(random() % (extent + 10)) - 5;
    };
    for (int i = 0; i < 20000; ++i) {
        BitMask::Size const size{reference::Draw(random, 0, 100), reference::Draw(random, 0, 8)};
        BitMask mask = reference::Noise(size, 50, random);
        geometry::Rectangle<int> const rect{corner(size.width), corner(size.height), corner(size.width),
                                            corner(size.height)};
        unsigned int const value = random() % 2;
        Words const expected = reference::EraseRect(mask, rect, value);
        mask.EraseRect(rect, value);
        ASSERT_EQ(mask.GetData(), expected)
            << size << ' ' << rect.x0 << ' ' << rect.y0 << ' ' << rect.x1 << ' ' << rect.y1;
    }
}

TEST(BitMaskCombination, CombinesEveryBitPaddingIncluded) {
    std::mt19937 random(12);
    for (unsigned int width : {1U, 31U, 32U, 33U, 63U, 64U, 65U, 255U, 256U, 257U, 1000U}) {
        BitMask const a = reference::Noise({width, 5}, 50, random);
        BitMask const b = reference::Noise({width, 5}, 50, random);
        BitMask both(a), rest(a), common(a);
        both.Union(b);
        rest.Difference(b);
        common.Intersection(b);
        for (unsigned int y = 0; y < 5; ++y) {
            for (unsigned int x = 0; x < 32 * a.GetStride(); ++x) {
                bool const p = reference::Get(a, x, y), q = reference::Get(b, x, y);
                ASSERT_EQ(reference::Get(both, x, y), p || q);
                ASSERT_EQ(reference::Get(rest, x, y), p && !q);
                ASSERT_EQ(reference::Get(common, x, y), p && q);
            }
        }
    }
}

TEST(BitMaskCombination, TakesTheMaskItself) {
    std::mt19937 random(13);
    BitMask const original = reference::Noise({70, 3}, 50, random);
    BitMask mask(original);
    mask.Union(mask);
    EXPECT_EQ(mask, original);
    mask.Intersection(mask);
    EXPECT_EQ(mask, original);
    mask.Difference(mask);
    EXPECT_EQ(mask, BitMask({70, 3}));
}

TEST(BitMaskCombination, StopsWhereTheShorterStoreEnds) {
    BitMask mask({32, 4}), other({32, 4});
    other.Fill(1);
    other.GetData().resize(2);
    mask.Union(other);
    EXPECT_EQ(mask.GetData(), (Words{Ones, Ones, 0, 0}));
    mask.GetData().resize(1);
    mask.Difference(other);
    EXPECT_EQ(mask.GetData(), (Words{0}));
}

TEST(BitMaskCombination, RefusesMasksThatDifferInSizeOrHoldNothing) {
    BitMask words({10, 10}), wordless({10, 10});
    words.Fill(1);
    wordless.GetData().clear();
    struct Case {
        char const* name;
        BitMask mask, other;
        char const* text;
    };
    Case const cases[] = {
        {"another height", words, BitMask({10, 11}), "BitMask dimensions must match"},
        {"another width", words, BitMask({11, 10}), "BitMask dimensions must match"},
        {"width and height exchanged", BitMask({10, 11}), BitMask({11, 10}), "BitMask dimensions must match"},
        {"a mismatch is told before emptiness", words, BitMask(), "BitMask dimensions must match"},
        {"nothing with nothing", BitMask(), BitMask(), "Empty BitMask"},
        {"no columns", BitMask({0, 3}), BitMask({0, 3}), "Empty BitMask"},
        {"no rows", BitMask({3, 0}), BitMask({3, 0}), "Empty BitMask"},
        {"this mask lost its words", wordless, words, "Empty BitMask"},
        {"the other mask lost its words", words, wordless, "Empty BitMask"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        for (auto const operation : {&BitMask::Union, &BitMask::Difference, &BitMask::Intersection}) {
            BitMask mask(c.mask);
            EXPECT_THAT([&] { (mask.*operation)(c.other); }, testing::ThrowsMessage<std::invalid_argument>(c.text));
            EXPECT_EQ(mask, c.mask);
        }
    }
}

TEST(BitMaskCombination, RefusesZeroExtentsWhateverTheStoreHolds) {
    for (BitMask::Size const size : {BitMask::Size{0, 3}, {3, 0}}) {
        BitMask mask(size), other(size);
        mask.GetData().assign(4, 1);
        other.GetData().assign(4, 2);
        EXPECT_THAT([&] { mask.Union(other); }, testing::ThrowsMessage<std::invalid_argument>("Empty BitMask"));
        EXPECT_EQ(mask.GetData(), Words(4, 1));
    }
}

TEST(BitMaskOutput, WritesItsSizeOnly) {
    std::ostringstream stream;
    BitMask mask({640, 480});
    mask.Fill(1);
    stream << BitMask() << mask;
    EXPECT_EQ(stream.str(), R"({"size":{"width":0,"height":0}}{"size":{"width":640,"height":480}})");
}

}  // namespace
}  // namespace qel::algorithm
