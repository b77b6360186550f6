#include "qel/algorithm/bit_mask/fill_polygon.hpp"

#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference/fill_polygon.hpp"
#include "reference/pixels.hpp"
#include "support/picture.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using support::Picture;
using Polygons = std::vector<geometry::Polygon<int>>;
using PixelPolygons = std::vector<geometry::Polygon<double>>;

geometry::Polygon<int> Box(int x0, int y0, int x1, int y1) { return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}; }

BitMask Fill(BitMask::Size size, Polygons const& polygons) {
    BitMask mask(size);
    detail::FillPolygonSet(mask, polygons, 1);
    return mask;
}

/// The mask with columns and rows first to last, inclusive, set.
BitMask Block(BitMask::Size size, unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1) {
    BitMask mask(size);
    for (unsigned int y = y0; y <= y1; ++y) {
        for (unsigned int x = x0; x <= x1; ++x) reference::Set(mask, x, y);
    }
    return mask;
}

TEST(FillPolygonSet, DrawsBothEndsOfASquare) {
    EXPECT_EQ(Fill({40, 20}, {Box(0, 0, 160, 160)}), Block({40, 20}, 0, 0, 10, 10));
}

TEST(FillPolygonSet, TakesPolygonsInEitherDirectionAndClosedOrNot) {
    BitMask const expected = Block({40, 20}, 1, 1, 5, 5);
    EXPECT_EQ(Fill({40, 20}, {{{16, 16}, {80, 16}, {80, 80}, {16, 80}}}), expected);
    EXPECT_EQ(Fill({40, 20}, {{{16, 80}, {80, 80}, {80, 16}, {16, 16}}}), expected);
    EXPECT_EQ(Fill({40, 20}, {{{16, 16}, {80, 16}, {80, 80}, {16, 80}, {16, 16}}}), expected);
}

TEST(FillPolygonSet, RoundsHalvesUpwards) {
    EXPECT_EQ(Fill({40, 20}, {Box(8, 8, 40, 40)}), Block({40, 20}, 1, 1, 3, 3));
    EXPECT_EQ(Fill({40, 20}, {Box(7, 7, 39, 39)}), Block({40, 20}, 0, 0, 2, 2));
    EXPECT_EQ(Fill({40, 20}, {Box(-8, -8, 39, 39)}), Block({40, 20}, 0, 0, 2, 2));
}

TEST(FillPolygonSet, DrawsNothingThatFitsIntoOneRow) {
    EXPECT_EQ(Fill({40, 20}, {Box(0, 17, 160, 23)}), BitMask({40, 20}));
    EXPECT_EQ(Fill({40, 20}, {Box(0, 0, 160, 7)}), BitMask({40, 20}));
    EXPECT_EQ(Fill({40, 20}, {Box(0, 7, 160, 8)}), Block({40, 20}, 0, 0, 10, 1));
}

TEST(FillPolygonSet, LeavesOutWhatAnEvenNumberCovers) {
    Polygons const twice{Box(0, 0, 160, 160), Box(0, 0, 160, 160)};
    EXPECT_EQ(Fill({40, 20}, twice), BitMask({40, 20}));
    Polygons const thrice{Box(0, 0, 160, 160), Box(0, 0, 160, 160), Box(0, 0, 160, 160)};
    EXPECT_EQ(Fill({40, 20}, thrice), Block({40, 20}, 0, 0, 10, 10));
}

TEST(FillPolygonSet, PaintsTheRimOfAHoleOnePixelWide) {
    // The hole runs from 48 to 112: rows and columns 3 and 7 are the ends of what surrounds it.
    BitMask expected = Block({40, 20}, 0, 0, 10, 10);
    for (unsigned int y = 4; y <= 6; ++y) {
        for (unsigned int x = 4; x <= 6; ++x) reference::Set(expected, x, y, false);
    }
    EXPECT_EQ(Fill({40, 20}, {Box(0, 0, 160, 160), Box(48, 48, 112, 112)}), expected);
    EXPECT_EQ(Fill({40, 20}, {Box(48, 48, 112, 112), Box(0, 0, 160, 160)}), expected);
}

TEST(FillPolygonSet, DrawsTheUnionOfOverlappingSquaresLessTheOverlap) {
    BitMask const mask = Fill({40, 40}, {Box(0, 0, 160, 160), Box(80, 80, 320, 320)});
    EXPECT_TRUE(reference::Get(mask, 2, 2));
    EXPECT_TRUE(reference::Get(mask, 15, 15));
    EXPECT_FALSE(reference::Get(mask, 7, 7));
    EXPECT_FALSE(reference::Get(mask, 15, 2));
    EXPECT_EQ(mask, reference::FillPolygonSet(BitMask({40, 40}), {Box(0, 0, 160, 160), Box(80, 80, 320, 320)}, 1));
}

TEST(FillPolygonSet, IsCutToTheMask) {
    struct Case {
        char const* name;
        geometry::Polygon<int> polygon;
        BitMask expected;
    };
    constexpr BitMask::Size Size{20, 10};
    Case const cases[] = {
        {"above the first row", Box(0, -100, 160, -9), BitMask(Size)},
        {"below the last row", Box(0, 160, 160, 300), BitMask(Size)},
        {"left of the first column", Box(-100, 0, -9, 100), BitMask(Size)},
        {"right of the last column", Box(320, 0, 400, 100), BitMask(Size)},
        {"across the first row", Box(16, -100, 64, 32), Block(Size, 1, 0, 4, 2)},
        {"across the last row", Box(16, 112, 64, 900), Block(Size, 1, 7, 4, 9)},
        {"across the first column", Box(-50, 16, 64, 32), Block(Size, 0, 1, 4, 2)},
        {"across the last column", Box(240, 16, 640, 32), Block(Size, 15, 1, 19, 2)},
        {"over everything", Box(-500, -500, 900, 900), Block(Size, 0, 0, 19, 9)},
        {"ends on row 0", Box(0, -64, 64, 0), BitMask(Size)},
        {"ends half a row below row 0", Box(0, -64, 64, 8), Block(Size, 0, 0, 4, 1)},
        {"begins on the last row", Box(0, 144, 64, 400), BitMask(Size)},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Fill(Size, {c.polygon}), c.expected);
    }
}

TEST(FillPolygonSet, SamplesSlantedSidesBetweenTheRoundedRows) {
    EXPECT_EQ(Fill({8, 5}, {{{0, 0}, {64, 64}, {0, 64}}}),
              Picture({"#.......", "##......", "###.....", "####....", "#####..."}));
    // Both slanted ends are rounded to rows first: the side is drawn from row 1 to row 3.
    EXPECT_EQ(Fill({8, 5}, {{{16, 10}, {80, 54}, {16, 54}}}),
              Picture({"........", ".#......", ".###....", ".#####..", "........"}));
}

TEST(FillPolygonSet, ClearsWithValueZero) {
    BitMask mask({40, 20});
    mask.Fill(1);
    Polygons const polygons{Box(0, 0, 160, 160)};
    detail::FillPolygonSet(mask, polygons, 0);
    BitMask expected({40, 20});
    expected.Fill(1);
    expected.Difference(Block({40, 20}, 0, 0, 10, 10));
    EXPECT_EQ(mask, expected);
}

TEST(FillPolygonSet, DrawsNothingOfDegeneratePolygons) {
    for (Polygons const& polygons : {Polygons{}, Polygons{{}}, Polygons{{{16, 16}}}, Polygons{{{16, 16}, {64, 64}}},
                                     Polygons{{{16, 16}, {64, 64}, {160, 160}}}}) {
        EXPECT_EQ(Fill({40, 20}, polygons), BitMask({40, 20}));
    }
}

TEST(FillPolygonSet, NeverWritesAMaskWithoutWords) {
    for (BitMask::Size const size : {BitMask::Size{0, 0}, {0, 9}, {9, 0}, {~0U, 2}}) {
        EXPECT_TRUE(Fill(size, {Box(-100, -100, 100, 100)}).GetData().empty());
    }
    BitMask mask({0, 2});
    mask.GetData().resize(2);
    Polygons const polygons{Box(-100, -100, 100, 100)};
    detail::FillPolygonSet(mask, polygons, 1);
    EXPECT_EQ(mask.GetData(), std::vector<std::uint32_t>(2));
}

TEST(FillPolygonSet, KeepsToTheRowsThatAShorterStoreHolds) {
    BitMask mask({32, 6});
    mask.GetData().resize(3);
    Polygons const polygons{Box(-100, -100, 2000, 2000)};
    detail::FillPolygonSet(mask, polygons, 1);
    EXPECT_EQ(mask.GetData(), std::vector<std::uint32_t>(3, ~0U));
}

TEST(FillPolygonSet, StaysInsideTheMaskWithCoordinatesTooLarge) {
    constexpr int Far = 1 << 26;
    BitMask mask({50, 50});
    for (Polygons const& polygons :
         {Polygons{Box(-Far, -Far, Far, Far)}, Polygons{{{-Far, -Far}, {Far, Far - 3}, {0, Far}}},
          Polygons{{{-Far, 0}, {Far, 7000}, {5, 7000}}}, Polygons{{{0, -Far}, {Far, 3}, {-Far, 800}}}}) {
        detail::FillPolygonSet(mask, polygons, 1);
    }
    EXPECT_EQ(mask.GetData().size(), 100U);
    // The right side's product with the height is 10 times 2 to the power of 32: nothing of it is left in 32 bits.
    EXPECT_EQ(Fill({50, 50}, {Box(160, 0, 1 << 28, 160)}), BitMask({50, 50}));
}

geometry::Polygon<int> RandomPolygon(std::mt19937& random, int extent, bool even) {
    geometry::Polygon<int> polygon;
    unsigned int const count = reference::Draw(random, 3, 9);
    for (unsigned int i = 0; i < count; ++i) {
        auto const coordinate = [&] {
            int const value = static_cast<int>(random() % static_cast<unsigned int>(2 * extent)) - extent / 2;
            return even ? value / 16 * 16 : value;
        };
        int const x = coordinate();
        polygon.push_back({x, coordinate()});
    }
    return polygon;
}

TEST(FillPolygonSet, GivesTheReferenceOnRandomSets) {
    std::mt19937 random(61);
    for (int i = 0; i < 400; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 100), reference::Draw(random, 1, 60)};
        BitMask mask = reference::Noise(size, 50, random);
        Polygons polygons;
        unsigned int const count = reference::Draw(random, 1, 4);
        bool const even = random() % 3 == 0;
        for (unsigned int k = 0; k < count; ++k) polygons.push_back(RandomPolygon(random, 1200, even));
        unsigned int const value = random() % 2;
        BitMask const expected = reference::FillPolygonSet(mask, polygons, value);
        detail::FillPolygonSet(mask, polygons, value);
        ASSERT_EQ(mask, expected) << size;
    }
}

TEST(FillPolygonSet, GivesTheReferenceOnManySmallPolygons) {
    // Groups that stand apart, and some that touch or nearly do.
    std::mt19937 random(62);
    for (int i = 0; i < 60; ++i) {
        BitMask mask({120, 90});
        Polygons polygons(reference::Draw(random, 10, 40));
        bool const even = i % 2 == 0;
        for (auto& polygon : polygons) {
            int const x = static_cast<int>(random() % 1900), y = static_cast<int>(random() % 1400);
            polygon = RandomPolygon(random, 90, even);
            for (auto& point : polygon)
                point = {point.x + (even ? x / 16 * 16 : x), point.y + (even ? y / 16 * 16 : y)};
        }
        BitMask const expected = reference::FillPolygonSet(mask, polygons, 1);
        detail::FillPolygonSet(mask, polygons, 1);
        ASSERT_EQ(mask, expected);
    }
}

TEST(FillPolygonSet, RoundsCrossingsAsOftenAsPolygonsFollow) {
    // Polygons that stand apart from the first one, but whose combination rounds its crossings once more.
    Polygons const sets[] = {{{{127, 171}, {127, 176}, {121, 168}, {134, 175}, {147, 182}, {125, 172}},
                              {{189, 106}, {189, 119}, {166, 121}, {184, 108}, {177, 112}, {166, 123}},
                              {{23, 162}, {29, 170}, {32, 182}, {40, 162}, {43, 159}},
                              {{141, 163}, {132, 183}, {135, 181}}},
                             {{{217, 670}, {111, 725}, {186, 700}, {173, 759}, {182, 694}, {170, 687}, {129, 762}},
                              {{211, 572}, {282, 535}, {289, 543}},
                              {{247, 721}, {164, 690}, {162, 672}, {135, 669}}}};
    for (Polygons const& polygons : sets) {
        EXPECT_EQ(Fill({60, 60}, polygons), reference::FillPolygonSet(BitMask({60, 60}), polygons, 1));
    }
}

TEST(FillPolygonSet, DrawsASetThatBoostPolygonCrashesOn) {
    // The second polygon, left of column 0, has sides that pass next to corners of others.
    Polygons const polygons{
        Box(16, 16, 160, 160),
        {{-50, 300}, {-84, 266}, {-82, 266}, {-77, 267}, {-70, 269}, {-39, 287}, {-46, 302}, {-36, 289},
         {-33, 292}, {-44, 303}, {-16, 308}, {-44, 304}, {-43, 305}, {-2, 330},  {-1, 333},  {-43, 306},
         {-43, 306}, {-5, 340},  {-44, 306}, {-45, 306}, {-44, 326}, {-45, 326}, {-46, 325}, {-47, 305},
         {-50, 322}, {-53, 320}, {-47, 304}, {-58, 316}, {-67, 308}, {-68, 308}, {-69, 307}, {-71, 305},
         {-73, 302}, {-49, 303}, {-49, 302}, {-91, 278}, {-91, 275}, {-50, 301}, {-50, 301}, {-50, 301}}};
    BitMask const mask = Fill({20, 30}, polygons);
    EXPECT_EQ(mask, reference::FillPolygonSet(BitMask({20, 30}), polygons, 1));
    EXPECT_TRUE(reference::Get(mask, 5, 5));
}

TEST(FillPolygons, RoundsPixelsToSixteenths) {
    BitMask mask({40, 20});
    PixelPolygons const polygons{{{0.47, -0.53125}, {2.4, -0.53125}, {2.4, 2.46875}, {0.47, 2.46875}}};
    FillPolygons(mask, polygons, 1);
    BitMask expected({40, 20});
    Polygons const sixteenths{{{8, -8}, {38, -8}, {38, 40}, {8, 40}}};
    detail::FillPolygonSet(expected, sixteenths, 1);
    EXPECT_EQ(mask, expected);
    EXPECT_EQ(mask, Block({40, 20}, 1, 0, 2, 3));
    FillPolygons(mask, polygons, 0);
    EXPECT_EQ(mask, BitMask({40, 20}));
    FillPolygons(mask, {}, 1);
    EXPECT_EQ(mask, BitMask({40, 20}));
}

TEST(FillPolygons, RefusesWhatItCannotDrawBeforeDrawingAnything) {
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    geometry::Polygon<double> const good{{0, 0}, {9, 0}, {9, 9}};
    struct Case {
        char const* name;
        PixelPolygons polygons;
        char const* text;
    };
    Case const cases[] = {
        {"no number",
         {good, {{0, 0}, {std::numeric_limits<double>::quiet_NaN(), 2}, {3, 4}}},
         "Cannot fill polygon 1: its point 1 (nan, 2) is not within 4194304 pixels of the origin"},
        {"infinite",
         {{{0, 0}, {1, 2}, {3, -Infinity}}},
         "Cannot fill polygon 0: its point 2 (3, -inf) is not within 4194304 pixels of the origin"},
        {"too far",
         {good, good, {{4194304.5, 0}, {1, 2}, {3, 4}}},
         "Cannot fill polygon 2: its point 0 (4.1943e+06, 0) is not within 4194304 pixels of the origin"},
        {"too large together",
         {good, {{-9000, 0}, {9000, 0}, {9000, 5000}}},
         "Cannot fill the polygons: 9000 columns from the origin by 5000 rows do not fit into 32-bit arithmetic; clip "
         "them to the mask or fill them in parts"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        BitMask mask({40, 20});
        EXPECT_THAT([&] { FillPolygons(mask, c.polygons, 1); }, testing::ThrowsMessage<std::invalid_argument>(c.text));
        EXPECT_EQ(mask, BitMask({40, 20}));
    }
}

TEST(FillPolygons, DrawsAWhole4KMask) {
    BitMask mask({3840, 2160});
    PixelPolygons const polygons{{{0, 0}, {3839, 0}, {3839, 2159}, {0, 2159}}};
    FillPolygons(mask, polygons, 1);
    BitMask expected({3840, 2160});
    expected.Fill(1);
    EXPECT_EQ(mask, expected);
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
