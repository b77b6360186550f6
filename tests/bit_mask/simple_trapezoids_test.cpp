#include "bit_mask/simple_trapezoids.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "reference/fill_polygon.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {

void PrintTo(Trapezoid const& t, std::ostream* out) {
    *out << '[' << t.start << ": " << t.bottom.left << " to " << t.bottom.right << ", " << t.end << ": " << t.top.left
         << " to " << t.top.right << ']';
}

namespace {

using Polygon = geometry::Polygon<int>;
using Polygons = std::vector<Polygon>;
using Trapezoids = std::vector<Trapezoid>;

Trapezoids Sorted(Trapezoids trapezoids) {
    auto const key = [](Trapezoid const& t) {
        return std::make_tuple(t.start, t.end, t.bottom.left, t.bottom.right, t.top.left, t.top.right);
    };
    std::sort(trapezoids.begin(), trapezoids.end(), [&](auto const& a, auto const& b) { return key(a) < key(b); });
    return trapezoids;
}

/// Boost.Polygon's, of a combination of each polygon with what came before.
Trapezoids OfBoost(Polygons const& polygons) {
    Trapezoids trapezoids;
    for (auto const& trapezoid : reference::Trapezoids(polygons)) {
        std::vector<boost::polygon::point_data<int>> const points(trapezoid.begin(), trapezoid.end());
        if (reference::IsSpike(points)) continue;
        auto const less = [](auto const& a, auto const& b) { return a.y() < b.y(); };
        auto const [lowest, highest] = std::minmax_element(points.begin(), points.end(), less);
        auto const span = [&](int y) {
            Span ends{1 << 30, -(1 << 30)};
            for (auto const& point : points) {
                if (point.y() != y) continue;
                ends.left = std::min(ends.left, point.x());
                ends.right = std::max(ends.right, point.x());
            }
            return ends;
        };
        int const start = (*lowest).y(), end = (*highest).y();
        trapezoids.push_back({start, end, span(start), span(end)});
    }
    return Sorted(trapezoids);
}

double Share(std::mt19937& random) { return static_cast<double>(random() % 10000) / 10000.0; }

/// Corners on an ellipse, in order, rounded to units; those of a star on two. grid: the units' width.
Polygon RandomStar(std::mt19937& random, unsigned int extent, int grid) {
    bool const convex = random() % 2 == 0;
    std::vector<double> angles(reference::Draw(random, 3, convex ? 14 : 40));
    for (double& angle : angles) angle = 6.2831853 * Share(random);
    std::sort(angles.begin(), angles.end());
    if (random() % 2 == 0) std::reverse(angles.begin(), angles.end());
    double const width = extent * (0.05 + Share(random)), height = extent * (0.05 + Share(random));
    double const turn = 6.2831853 * Share(random), inner = Share(random);
    double const x = extent * (3 * Share(random) - 1), y = extent * (3 * Share(random) - 1);
    Polygon polygon;
    for (double const angle : angles) {
        double const reach = convex || random() % 2 == 0 ? 1 : inner;
        double const across = reach * width * std::cos(angle), up = reach * height * std::sin(angle);
        auto const round = [grid](double value) { return static_cast<int>(std::lround(value / grid)) * grid; };
        polygon.push_back({round(x + across * std::cos(turn) - up * std::sin(turn)),
                           round(y + across * std::sin(turn) + up * std::cos(turn))});
    }
    if (random() % 4 == 0) polygon.push_back(polygon[0]);
    return polygon;
}

/// A comb with level and upright sides, or slightly slanted ones: the corners of many teeth lie at one height.
Polygon RandomComb(std::mt19937& random, unsigned int extent, bool slanted) {
    Polygon polygon;
    int const step = static_cast<int>(extent / 8 + 8);
    int const teeth = static_cast<int>(reference::Draw(random, 2, 9));
    auto const shake = [&] { return slanted ? static_cast<int>(random() % 3) - 1 : 0; };
    auto const height = [&] { return step * static_cast<int>(reference::Draw(random, 1, 4)); };
    polygon.push_back({shake(), -height()});
    for (int i = 0; i < teeth; ++i) {
        int const top = 5 * step + height(), bottom = height();
        polygon.push_back({2 * i * step + shake(), top + shake()});
        polygon.push_back({(2 * i + 1) * step + shake(), top + shake()});
        polygon.push_back({(2 * i + 1) * step + shake(), bottom + shake()});
        polygon.push_back({(2 * i + 2) * step + shake(), bottom + shake()});
    }
    polygon.push_back({2 * teeth * step + step, -height()});
    if (random() % 2 == 0) {
        for (auto& point : polygon) point = {point.y, point.x};
    }
    if (random() % 2 == 0) {
        for (auto& point : polygon) point.y = -point.y;
    }
    return polygon;
}

/// How many of rounds polygons are cut here, all of them as Boost.Polygon does.
int CountSimple(std::mt19937& random, int rounds) {
    SimpleTrapezoids simple;
    int count = 0;
    for (unsigned int const extent : {6U, 60U, 700U, 30000U, 900000U, 20000000U}) {
        for (int i = 0; i < rounds; ++i) {
            Polygon const polygon =
                i % 3 == 0 ? RandomComb(random, extent, i % 2 == 0) : RandomStar(random, extent, i % 5 == 0 ? 16 : 1);
            Trapezoids trapezoids;
            if (!simple.Append(polygon, trapezoids)) continue;
            ++count;
            EXPECT_EQ(Sorted(trapezoids), OfBoost({polygon})) << extent << ' ' << i;
            if (testing::Test::HasFailure()) return count;
        }
    }
    return count;
}

TEST(SimpleTrapezoids, AreThoseOfTheSetOperation) {
    std::mt19937 random(63);
    EXPECT_GT(CountSimple(random, 400), 1000);
}

TEST(SimpleTrapezoids, AreGivenForPolygonsThatCrossThemselvesNowhere) {
    Polygons const polygons{
        {{0, 0}, {160, 0}, {160, 160}, {0, 160}},
        {{160, 160}, {160, 0}, {0, 0}, {0, 160}},
        {{0, 0}, {160, 0}, {80, 160}, {0, 0}},
        {{80, 0}, {160, 160}, {0, 160}},
        {{-100, -50}, {-40, -90}, {33, -50}, {-20, 77}},
        {{0, 0}, {160, 0}, {80, 40}, {80, 160}},                                               // a dent
        {{0, 0}, {50, 0}, {50, 80}, {100, 80}, {100, 0}, {160, 0}, {160, 120}, {0, 120}},      // an arch
        {{0, 120}, {50, 120}, {50, 40}, {100, 40}, {100, 120}, {160, 120}, {160, 0}, {0, 0}},  // a U
        {{0, 0}, {160, 0}, {160, 40}, {100, 40}, {100, 80}, {60, 80}, {60, 40}, {0, 40}},      // a T
        {{0, 40},
         {60, 40},
         {60, 0},
         {100, 0},
         {100, 40},
         {160, 40},
         {160, 80},
         {100, 80},
         {100, 120},
         {60, 120},
         {60, 80},
         {0, 80}},  // a cross
        {{0, 0},
         {200, 0},
         {200, 200},
         {40, 200},
         {40, 80},
         {120, 80},
         {120, 120},
         {80, 120},
         {80, 160},
         {160, 160},
         {160, 40},
         {0, 40}},  // winding
    };
    SimpleTrapezoids simple;
    for (auto const& polygon : polygons) {
        Trapezoids trapezoids;
        ASSERT_TRUE(simple.Append(polygon, trapezoids));
        EXPECT_EQ(Sorted(trapezoids), OfBoost({polygon}));
    }
}

TEST(SimpleTrapezoids, AreLeftToTheSetOperationForOtherPolygons) {
    constexpr int Far = (1 << 26) + 1;
    Polygon many;
    for (int i = 0; i < 513; ++i) {
        double const angle = 6.2831853 * i / 513;
        many.push_back({static_cast<int>(1000000 * std::cos(angle)), static_cast<int>(1000000 * std::sin(angle))});
    }
    Polygons const polygons{{},
                            {{5, 5}},
                            {{5, 5}, {50, 50}},
                            {{5, 5}, {50, 50}, {5, 5}},
                            {{0, 0}, {160, 0}, {80, 0}, {80, 160}},                  // a corner on a side
                            {{0, 0}, {80, 0}, {160, 0}, {80, 160}},                  // a straight corner
                            {{0, 0}, {160, 160}, {160, 0}, {0, 160}},                // crossing itself
                            {{0, 100}, {60, -80}, {-95, 30}, {95, 30}, {-60, -80}},  // a star round its middle twice
                            {{0, 0}, {160, 1}, {160, 2}},                            // thin
                            {{0, 0}, {0, 0}, {160, 0}, {80, 160}},                   // a corner twice
                            {{0, 0}, {160, 0}, {160, 160}, {80, 1}, {0, 160}},       // a corner next to a side
                            {{0, 0}, {Far, 0}, {80, 160}},
                            {{0, 0}, {160, 0}, {80, -Far}},
                            many};
    SimpleTrapezoids simple;
    for (auto const& polygon : polygons) {
        Trapezoids trapezoids;
        EXPECT_FALSE(simple.Append(polygon, trapezoids)) << polygon.size();
        EXPECT_TRUE(trapezoids.empty());
    }
}

TEST(GetTrapezoids, GivesThoseOfOneCombination) {
    std::mt19937 random(64);
    for (int i = 0; i < 300; ++i) {
        Polygons polygons(reference::Draw(random, 1, 6));
        int const spread = static_cast<int>(reference::Draw(random, 1, 2000));
        for (auto& polygon : polygons) {
            polygon = random() % 3 == 0 ? RandomComb(random, 60, random() % 2 == 0) : RandomStar(random, 60, 1);
            int const x = static_cast<int>(random() % 2000) % spread, y = static_cast<int>(random() % 2000) % spread;
            for (auto& point : polygon) point = {point.x + x, point.y + y};
        }
        ASSERT_EQ(Sorted(GetTrapezoids(polygons)), OfBoost(polygons)) << i;
    }
}

/// Corners on a grid so narrow that many sides pass next to them, left of column 0 as well.
Polygons RandomThicket(std::mt19937& random) {
    Polygons polygons(reference::Draw(random, 1, 2));
    unsigned int const height = reference::Draw(random, 20, 400), width = reference::Draw(random, 2, 13);
    for (auto& polygon : polygons) {
        for (unsigned int count = reference::Draw(random, 4, 15); count > 0; --count) {
            int const x = static_cast<int>(random() % width) - static_cast<int>(width / 2);
            polygon.push_back({x, static_cast<int>(random() % height) - static_cast<int>(height / 2)});
        }
    }
    return polygons;
}

TEST(GetTrapezoids, GivesThoseOfCrowdedCorners) {
    std::mt19937 random(65);
    for (int i = 0; i < 200; ++i) {
        Polygons const polygons = RandomThicket(random);
        ASSERT_EQ(Sorted(GetTrapezoids(polygons)), OfBoost(polygons)) << i;
    }
}

TEST(GetTrapezoids, AreGivenWhereBoostPolygonCrashes) {
    Polygons const sets[] = {{{{-4, -31}, {1, 91}, {-3, -37}, {6, 63}, {-2, 20}, {5, 96}, {-5, -69}},
                              {{-1, -52}, {-2, 97}, {-6, -83}, {0, 37}, {2, -93}}},
                             {{{-3, -12}, {-4, -32}, {-3, -26}},
                              {{2, 29},
                               {-3, -36},
                               {-2, 26},
                               {3, -30},
                               {-4, -28},
                               {1, -3},
                               {2, -41},
                               {0, 21},
                               {2, 17},
                               {-3, -35},
                               {-2, -24}}}};
    for (Polygons const& polygons : sets) {
        Trapezoids const trapezoids = GetTrapezoids(polygons);
        EXPECT_GT(trapezoids.size(), 15U);
        EXPECT_EQ(Sorted(trapezoids), OfBoost(polygons));
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
