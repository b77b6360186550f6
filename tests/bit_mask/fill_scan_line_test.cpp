#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

#include <array>
#include <random>

#include <gtest/gtest.h>

#include "reference/fills.hpp"
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

}  // namespace
}  // namespace qel::algorithm::bit_mask
