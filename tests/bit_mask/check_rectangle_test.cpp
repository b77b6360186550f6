#include "qel/algorithm/bit_mask/check_rectangle.hpp"

#include <array>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/fills.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

constexpr std::uint32_t Ones = ~0U;

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

}  // namespace
}  // namespace qel::algorithm::bit_mask
