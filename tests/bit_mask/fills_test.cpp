#include "reference/fills.hpp"

#include <array>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/bit_mask/check_rectangle.hpp"
#include "qel/algorithm/bit_mask/fill_rectangle.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Row = std::array<std::uint32_t, 3>;
constexpr std::uint32_t Ones = ~0U;

TEST(FillScanLine, WritesOnlyTheColumnsFirstToLast) {
    struct Case {
        char const* name;
        unsigned int first, last, value;
        Row before, after;
    };
    constexpr Case Cases[] = {
        {"one whole word", 0, 31, 1, {0, 0, 0}, {Ones, 0, 0}},
        {"one column", 3, 3, 1, {0, 0, 0}, {1U << 28, 0, 0}},
        {"any value but 0 sets", 31, 31, 2, {0, 0, 0}, {1, 0, 0}},
        {"sets inside a word and keeps the rest", 8, 15, 1, {0x80000001U, 0, 0}, {0x80FF0001U, 0, 0}},
        {"clears inside a word", 8, 15, 0, {Ones, Ones, Ones}, {0xFF00FFFFU, Ones, Ones}},
        {"clears across a word edge", 30, 33, 0, {Ones, Ones, 0}, {~3U, Ones >> 2, 0}},
        {"sets across a word edge", 31, 32, 1, {0, 0, 0}, {1, 0x80000000U, 0}},
        {"sets whole words from end to end", 0, 95, 1, {0, 0, 0}, {Ones, Ones, Ones}},
        {"clears whole words from end to end", 0, 95, 0, {Ones, Ones, Ones}, {0, 0, 0}},
        {"sets the words between", 31, 64, 1, {0, 0, 0}, {1, Ones, 0x80000000U}},
        {"clears the words between", 31, 64, 0, {Ones, Ones, Ones}, {~1U, 0, ~0x80000000U}},
        {"the last column of a row", 95, 95, 1, {0, 0, 0}, {0, 0, 1}},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        Row row = c.before;
        FillScanLine(row.data(), c.first, c.last, c.value);
        EXPECT_EQ(row, c.after);
    }
}

TEST(FillScanLine, WritesEverySpanExactly) {
    std::mt19937 random(21);
    constexpr unsigned int Words = 5;
    for (unsigned int first = 0; first < 32 * Words; ++first) {
        for (unsigned int last = first; last < 32 * Words; ++last) {
            BitMask const before = reference::Noise({32 * Words, 3}, 50, random);
            for (unsigned int value : {0U, 1U}) {
                BitMask mask(before);
                FillScanLine(mask.GetData().data() + Words, first, last, value);
                ASSERT_EQ(mask, reference::FillScanLine(before, 1, first, last, value)) << first << ' ' << last;
            }
        }
    }
}

TEST(CheckRectangle, SeesExactlyThePixelsInside) {
    struct Case {
        char const* name;
        geometry::Rectangle<unsigned int> rect;
        std::array<std::uint32_t, 4> words;
        bool result;
    };
    constexpr Case Cases[] = {
        {"the last pixel of a whole word", {0, 0, 32, 1}, {1, 0, 0, 0}, true},
        {"not the word after it", {0, 0, 32, 1}, {0, Ones, Ones, Ones}, false},
        {"bit 0 before a word edge", {31, 0, 33, 1}, {1, 0, 0, 0}, true},
        {"bit 31 behind a word edge", {31, 0, 33, 1}, {0, 0x80000000U, 0, 0}, true},
        {"nothing else of either word", {31, 0, 33, 1}, {~1U, ~0x80000000U, Ones, Ones}, false},
        {"a column inside a word", {4, 0, 5, 1}, {0x08000000U, 0, 0, 0}, true},
        {"not its neighbours", {4, 0, 5, 1}, {~0x08000000U, Ones, Ones, Ones}, false},
        {"the second row", {0, 1, 1, 2}, {0, 0, 0x80000000U, 0}, true},
        {"not the row after y1 - 1", {0, 0, 64, 1}, {0, 0, Ones, Ones}, false},
        {"not the row before y0", {0, 1, 64, 2}, {Ones, Ones, 0, 0}, false},
        {"no rows", {0, 1, 64, 1}, {Ones, Ones, Ones, Ones}, false},
        {"rows in the wrong order", {0, 1, 64, 0}, {Ones, Ones, Ones, Ones}, false},
        {"the whole of both rows", {0, 0, 64, 2}, {0, 0, 0, 1}, true},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(CheckRectangle(c.words.data(), {64, 2}, c.rect), c.result);
    }
}

TEST(CheckRectangle, ReadsOnlyTheWidthOfTheSize) {
    constexpr std::array<std::uint32_t, 4> Words{0, 0, 0, 1};
    EXPECT_TRUE(CheckRectangle(Words.data(), {64, 0}, {0, 0, 64, 2}));
    EXPECT_FALSE(CheckRectangle(Words.data(), {64, 9}, {0, 0, 64, 1}));
}

TEST(CheckRectangle, StaysInsideTheRowWhenTheColumnsDoNot) {
    std::vector<std::uint32_t> const words(2, 0);
    std::vector<std::uint32_t> const set{0, 1};
    EXPECT_FALSE(CheckRectangle(words.data(), {64, 1}, {0, 0, 0, 1}));
    EXPECT_FALSE(CheckRectangle(words.data(), {64, 1}, {40, 0, 5000, 1}));
    EXPECT_TRUE(CheckRectangle(set.data(), {64, 1}, {40, 0, 5000, 1}));
    EXPECT_FALSE(CheckRectangle(set.data(), {64, 1}, {4000, 0, 5000, 1}));
    EXPECT_FALSE(CheckRectangle(nullptr, {0, 0}, {0, 0, 1, 1}));
}

TEST(CheckRectangle, AgreesWithThePixelsOnRandomRectangles) {
    std::mt19937 random(22);
    for (int i = 0; i < 20000; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 200), reference::Draw(random, 1, 6)};
        BitMask const mask = reference::Noise(size, 1, random);
        geometry::Rectangle<unsigned int> rect{};
        rect.x0 = reference::Draw(random, 0, size.width - 1);
        rect.x1 = reference::Draw(random, rect.x0 + 1, size.width);
        rect.y0 = reference::Draw(random, 0, size.height);
        rect.y1 = reference::Draw(random, 0, size.height);
        ASSERT_EQ(CheckRectangle(mask.GetData().data(), size, rect), reference::CheckRectangle(mask, rect)) << size;
    }
}

TEST(FillRectangle, NeverWritesTheLastColumnOrRow) {
    BitMask mask({10, 10});
    FillRectangle(mask, {0, 0, 10, 10}, 1);
    for (unsigned int y = 0; y < 10; ++y) {
        for (unsigned int x = 0; x < 32; ++x) EXPECT_EQ(reference::Get(mask, x, y), x < 9 && y < 9) << x << ' ' << y;
    }
    mask.Fill(1);
    FillRectangle(mask, {0, 0, 10, 10}, 0);
    for (unsigned int y = 0; y < 10; ++y) {
        for (unsigned int x = 0; x < 32; ++x) EXPECT_EQ(reference::Get(mask, x, y), x >= 9 || y >= 9) << x << ' ' << y;
    }
}

TEST(FillRectangle, IsCutToTheMask) {
    BitMask mask({70, 3});
    FillRectangle(mask, {-5, -9, 3, 1}, 1);
    EXPECT_EQ(mask.GetData(), (std::vector<std::uint32_t>{0xE0000000U, 0, 0, 0, 0, 0, 0, 0, 0}));
    mask.Fill(0);
    for (geometry::Rectangle<int> const rect : {geometry::Rectangle<int>{70, 0, 90, 2},
                                                {69, 0, 70, 2},
                                                {0, 2, 70, 9},
                                                {5, 0, 5, 2},
                                                {5, 0, 2, 2},
                                                {5, 1, 9, 0},
                                                {-9, 0, 0, 2}}) {
        FillRectangle(mask, rect, 1);
        EXPECT_EQ(mask, BitMask({70, 3})) << rect.x0;
    }
}

TEST(FillRectangle, NeverWritesAMaskWithoutWords) {
    constexpr int Least = std::numeric_limits<int>::min();
    constexpr int Most = std::numeric_limits<int>::max();
    for (BitMask::Size const size : {BitMask::Size{0, 0}, {0, 5}, {5, 0}, {Ones, 5}}) {
        BitMask mask(size);
        FillRectangle(mask, {Least, Least, Most, Most}, 1);
        FillRectangle(mask, {-1, -1, 1, 1}, 1);
        EXPECT_TRUE(mask.GetData().empty());
    }
}

TEST(FillRectangle, AgreesWithThePixelsOnRandomRectangles) {
    std::mt19937 random(23);
    constexpr int Corners[] = {std::numeric_limits<int>::min(), -1, 0, 31, 32, 33, 64, std::numeric_limits<int>::max()};
    auto const corner = [&](unsigned int extent) {
        if (random() % 4 == 0) return Corners[random() % std::size(Corners)];
        return static_cast<int>(random() % (extent + 10)) - 5;
    };
    for (int i = 0; i < 20000; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 140), reference::Draw(random, 1, 6)};
        BitMask mask = reference::Noise(size, 50, random);
        geometry::Rectangle<int> const rect{corner(size.width), corner(size.height), corner(size.width),
                                            corner(size.height)};
        unsigned int const value = random() % 2;
        BitMask const expected = reference::FillRectangle(mask, rect, value);
        FillRectangle(mask, rect, value);
        ASSERT_EQ(mask, expected) << size << ' ' << rect.x0 << ' ' << rect.y0 << ' ' << rect.x1 << ' ' << rect.y1;
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
