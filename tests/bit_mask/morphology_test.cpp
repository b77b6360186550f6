// Every set of word loops that the machine can run, against the same reference.
#include "bit_mask/morphology.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"
#include "reference/morphology.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Words = std::vector<std::uint32_t>;
constexpr std::uint32_t Ones = ~0U;
constexpr std::uint32_t Guard = 0xC0FFEE11U;
constexpr std::size_t Widths[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 18, 24, 31, 32, 33, 48, 60, 65};

Words Random(std::size_t count, unsigned int percent, std::mt19937& random) {
    return reference::Noise({static_cast<unsigned int>(32 * count), 1}, percent, random).GetData();
}

/// What write leaves in count words, checking that the words around them stay. They begin at any place in a vector.
template <class Write>
Words Output(std::size_t count, Write write) {
    static std::ptrdiff_t before = 32;
    before = 32 + (before - 31) % 16;
    Words words(count + 64, Guard);
    write(words.data() + before);
    std::ptrdiff_t const after = before + static_cast<std::ptrdiff_t>(count);
    EXPECT_EQ(Words(words.begin(), words.begin() + before), Words(static_cast<std::size_t>(before), Guard));
    EXPECT_EQ(Words(words.begin() + after, words.end()), Words(static_cast<std::size_t>(64 - before), Guard));
    return {words.begin() + before, words.begin() + after};
}

class Morphology : public testing::TestWithParam<RowKernels> {};

TEST_P(Morphology, GivesTheReferenceOfWholeMasks) {
    std::mt19937 random(31);
    for (std::size_t const words : Widths) {
        for (std::size_t const rows : {0U, 1U, 2U, 3U, 4U, 7U}) {
            for (unsigned int const percent : {1U, 10U, 50U, 90U, 99U}) {
                Words const src = Random(rows * words, percent, random);
                ASSERT_EQ(Output(src.size(), [&](auto* dst) { Dilate(GetParam(), src.data(), dst, rows, words); }),
                          reference::Morphology(true, src, rows, words))
                    << rows << ' ' << words;
                ASSERT_EQ(Output(src.size(), [&](auto* dst) { Erode(GetParam(), src.data(), dst, rows, words); }),
                          reference::Morphology(false, src, rows, words))
                    << rows << ' ' << words;
            }
        }
    }
}

TEST_P(Morphology, WritesNothingWithoutWords) {
    for (std::size_t const rows : {0U, 1U, 2U, 3U, 5U}) {
        EXPECT_TRUE(Output(0, [&](auto* dst) { Dilate(GetParam(), dst, dst, rows, 0); }).empty());
        EXPECT_TRUE(Output(0, [&](auto* dst) { Erode(GetParam(), dst, dst, rows, 0); }).empty());
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, Morphology,
                         testing::ValuesIn(GetSupportedRowKernels().begin(), GetSupportedRowKernels().end()),
                         [](auto const& kernels) { return kernels.param.name; });

TEST(RowKernels, OfTheFastestKindAreChosen) {
    EXPECT_STREQ(GetSupportedRowKernels().front().name, "plain");
    EXPECT_EQ(&GetRowKernels(), &GetSupportedRowKernels().back());
}

TEST(DilateRow, WritesARowFromTwoAndMovesOn) {
    Words const src{0x80000001U, 0, 0x00010000U, 0x80000000U, 7, 7};
    Words dst(4, Guard);
    std::uint32_t const* from = src.data();
    std::uint32_t* to = dst.data();
    DilateRow<2>(from, to, 2);
    EXPECT_EQ(from, src.data() + 2);
    EXPECT_EQ(to, dst.data() + 2);
    EXPECT_EQ(dst, (Words{0xC0038003U, 0xC0000000U, Guard, Guard}));
}

TEST(Dilate8Way, SpreadsOnePixelToItsNeighbours) {
    struct Case {
        char const* name;
        std::size_t words;
        Words before, after;
    };
    Case const cases[] = {
        {"the middle", 1, {0, 0, 0x20000000U, 0, 0}, {0, 0x70000000U, 0x70000000U, 0x70000000U, 0}},
        {"a corner", 1, {0x80000000U, 0, 0}, {0xC0000000U, 0xC0000000U, 0}},
        {"column 31 into column 32", 2, {1, 0}, {3, 0x80000000U}},
        {"column 32 into column 31", 2, {0, 0x80000000U}, {1, 0xC0000000U}},
        {"the last bit of a row not into the next row", 1, {1, 0, 0}, {3, 3, 0}},
        {"the first bit of a row not into the row before", 1, {0, 0, 0x80000000U}, {0, 0xC0000000U, 0xC0000000U}},
        {"a single row sideways only", 1, {0x20000000U}, {0x70000000U}},
        {"two rows alike", 1, {0x20000000U, 0x00000004U}, {0x7000000EU, 0x7000000EU}},
        {"the last pixel of 10 into the padding", 1, {0x00400000U, 0, 0}, {0x00E00000U, 0x00E00000U, 0}},
        {"no rows", 1, {}, {}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Output(c.before.size(),
                         [&](auto* dst) { Dilate8Way(c.before.data(), dst, c.before.size() / c.words, c.words); }),
                  c.after);
    }
}

TEST(Erode8Way, KeepsPixelsWhoseNeighboursAreAllSet) {
    struct Case {
        char const* name;
        std::size_t words;
        Words before, after;
    };
    Case const cases[] = {
        {"all ones but for the rim", 1, {Ones, Ones, Ones}, {0, 0x7FFFFFFEU, 0}},
        {"across a word edge", 2, {3, Ones, 3, Ones, 3, Ones}, {0, 0, 1, 0xFFFFFFFEU, 0, 0}},
        {"a hole above", 1, {~0x10000U, Ones, Ones}, {0, 0x7FFC7FFEU, 0}},
        {"two rows have no inside", 1, {Ones, Ones}, {0, 0}},
        {"nor has one", 2, {Ones, Ones}, {0, 0}},
        {"nor none", 1, {}, {}},
        {"the last pixel of 10 without padding", 1, {0xFFC00000U, 0xFFC00000U, 0xFFC00000U}, {0, 0x7F800000U, 0}},
        {"the last pixel of 10 beside set padding", 1, {0xFFE00000U, 0xFFE00000U, 0xFFE00000U}, {0, 0x7FC00000U, 0}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Output(c.before.size(),
                         [&](auto* dst) { Erode8Way(c.before.data(), dst, c.before.size() / c.words, c.words); }),
                  c.after);
    }
}

TEST(MorphologyLines, GiveTheMiddleRowOfThree) {
    std::mt19937 random(32);
    for (std::size_t const words : Widths) {
        for (unsigned int const percent : {20U, 90U}) {
            Words const above = Random(words, percent, random), row = Random(words, percent, random),
                        below = Random(words, percent, random);
            Words band(above);
            band.insert(band.end(), row.begin(), row.end());
            band.insert(band.end(), below.begin(), below.end());
            for (bool const dilation : {true, false}) {
                Words const whole = reference::Morphology(dilation, band, 3, words);
                Words const middle(whole.begin() + static_cast<std::ptrdiff_t>(words),
                                   whole.begin() + static_cast<std::ptrdiff_t>(2 * words));
                auto const operation = dilation ? DilateLine8Way : ErodeLine8Way;
                ASSERT_EQ(
                    Output(words, [&](auto* out) { operation(above.data(), row.data(), below.data(), out, words); }),
                    middle)
                    << words;
            }
        }
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
