#include "bit_mask/cut_sides.hpp"

#include <random>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Sides = std::vector<Region::element_type>;
using Trapezoids = std::vector<Trapezoid>;

TEST(AppendTrapezoids, SwapsColumnsAndRows) {
    // A triangle with a level top, given by its sides with x and y swapped.
    Sides const sides{{{{0, 0}, {40, -20}}, 1}, {{{0, 0}, {40, 30}}, -1}, {{{40, -20}, {40, 30}}, -1}};
    Trapezoids trapezoids{{1, 2, {3, 4}, {5, 6}}};
    AppendTrapezoids(sides, trapezoids);
    EXPECT_EQ(trapezoids, (Trapezoids{{1, 2, {3, 4}, {5, 6}}, {0, 40, {0, 0}, {-20, 30}}}));
}

TEST(AppendTrapezoids, RefusesSidesThatMeetBetweenCorners) {
    Sides const sets[] = {{{{{1, 0}, {1, 1}}, -1}, {{{1, 0}, {1, 2}}, -1}},
                          {{{{0, 3}, {3, 6}}, -1},
                           {{{0, 3}, {2, 5}}, 1},
                           {{{0, 0}, {4, 4}}, -1},
                           {{{0, 1}, {2, 3}}, 1},
                           {{{0, 0}, {4, 4}}, -1}},
                          // An end that has been joined is to be joined once more.
                          {{{{-1, -1}, {1, 0}}, 1},
                           {{{0, 1}, {1, 1}}, 1},
                           {{{-1, -1}, {0, 1}}, -1},
                           {{{-1, 0}, {1, 1}}, 1},
                           {{{0, 1}, {1, 0}}, 1},
                           {{{-1, 0}, {-1, 1}}, 1},
                           {{{0, 1}, {1, -1}}, -1}},
                          // At a column that it does not reach, a steep side is as far down as no int tells.
                          {{{{-150183693, -997718586}, {492927752, 932856451}}, 1},
                           {{{-774195199, -934037780}, {-549055781, 1057999424}}, -1},
                           {{{-549055781, 1057999424}, {-150183693, -997718586}}, -1},
                           {{{-774195199, -934037780}, {957677260, -151524021}}, 1}}};
    for (Sides const& sides : sets) {
        Trapezoids trapezoids;
        try {
            AppendTrapezoids(sides, trapezoids);
            FAIL();
        } catch (std::runtime_error const& error) {
            EXPECT_STREQ(error.what(),
                         "Cannot fill the polygons: combined, their sides meet between corners; fill them in parts");
        }
        EXPECT_TRUE(trapezoids.empty());
    }
}

TEST(AppendTrapezoids, TakesOrRefusesAnySides) {
    std::mt19937 random(1);
    int taken = 0, refused = 0;
    for (int i = 0; i < 20000; ++i) {
        int const extent = i % 100 == 0 ? 1 << 26 : static_cast<int>(reference::Draw(random, 2, 30));
        auto const coordinate = [&] {
            return static_cast<int>(random() % static_cast<unsigned int>(extent)) - extent / 2;
        };
        Sides sides(reference::Draw(random, 1, 30));
        for (auto& [ends, count] : sides) {
            int const x = coordinate(), y = coordinate(), length = 1 + coordinate() + extent / 2;
            ends = {{x, y}, {x + (random() % 4 == 0 ? 0 : length), y + length}};
            count = random() % 2 == 0 ? 1 : -1;
        }
        Trapezoids trapezoids;
        try {
            AppendTrapezoids(sides, trapezoids);
            ++taken;
        } catch (std::runtime_error const&) {
            EXPECT_TRUE(trapezoids.empty());
            ++refused;
        }
    }
    EXPECT_GT(taken, 100);
    EXPECT_GT(refused, 100);
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
