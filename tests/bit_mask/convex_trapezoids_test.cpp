#include "bit_mask/convex_trapezoids.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/fill_polygon.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Polygons = std::vector<geometry::Polygon<int>>;

/// A trapezoid's rows and columns: least y, greatest y, least and greatest x at either.
using Ends = std::array<int, 6>;

template <class Points>
Ends GetEnds(Points const& points) {
    Ends ends{points[0][1], points[0][1], 0, 0, 0, 0};
    for (auto const& point : points) {
        ends[0] = std::min(ends[0], point[1]);
        ends[1] = std::max(ends[1], point[1]);
    }
    for (std::size_t side = 0; side < 2; ++side) {
        std::vector<int> columns;
        for (auto const& point : points) {
            if (point[1] == ends[side]) columns.push_back(point[0]);
        }
        ends[2 + 2 * side] = *std::min_element(columns.begin(), columns.end());
        ends[3 + 2 * side] = *std::max_element(columns.begin(), columns.end());
    }
    return ends;
}

std::vector<Ends> Ours(Polygons const& trapezoids) {
    std::vector<Ends> all;
    for (auto const& trapezoid : trapezoids) {
        EXPECT_EQ(trapezoid[0], trapezoid[trapezoid.size() - 1]);
        std::vector<std::array<int, 2>> points;
        for (auto const& point : trapezoid) points.push_back({point.x, point.y});
        all.push_back(GetEnds(points));
    }
    std::sort(all.begin(), all.end());
    return all;
}

std::vector<Ends> OfBoost(geometry::Polygon<int> const& polygon) {
    std::vector<Ends> all;
    for (auto const& trapezoid : reference::Trapezoids({polygon})) {
        std::vector<std::array<int, 2>> points;
        for (auto const& point : trapezoid) points.push_back({point.x(), point.y()});
        all.push_back(GetEnds(points));
    }
    std::sort(all.begin(), all.end());
    return all;
}

/// Corners on an ellipse, in order, rounded to units.
geometry::Polygon<int> RandomConvex(std::mt19937& random, unsigned int extent) {
    auto const share = [&random] { return static_cast<double>(random() % 10000) / 10000.0; };
    std::vector<double> angles(reference::Draw(random, 3, 14));
    for (double& angle : angles) angle = 6.2831853 * share();
    std::sort(angles.begin(), angles.end());
    if (random() % 2 == 0) std::reverse(angles.begin(), angles.end());
    double const width = extent * (0.05 + share()), height = extent * (0.05 + share()), turn = 6.2831853 * share();
    double const x = extent * (3 * share() - 1), y = extent * (3 * share() - 1);
    geometry::Polygon<int> polygon;
    for (double const angle : angles) {
        double const across = width * std::cos(angle), up = height * std::sin(angle);
        polygon.push_back({static_cast<int>(std::lround(x + across * std::cos(turn) - up * std::sin(turn))),
                           static_cast<int>(std::lround(y + across * std::sin(turn) + up * std::cos(turn)))});
    }
    return polygon;
}

TEST(ConvexTrapezoids, AreThoseOfTheSetOperation) {
    std::mt19937 random(63);
    int convex = 0;
    for (unsigned int const extent : {6U, 60U, 700U, 30000U, 900000U}) {
        for (int i = 0; i < 600; ++i) {
            geometry::Polygon<int> const polygon = RandomConvex(random, extent);
            Polygons trapezoids;
            if (!AppendConvexTrapezoids(polygon, trapezoids)) continue;
            ++convex;
            ASSERT_EQ(Ours(trapezoids), OfBoost(polygon)) << extent << ' ' << i;
        }
    }
    EXPECT_GT(convex, 1000);
}

TEST(ConvexTrapezoids, AreGivenForLevelTopsAndBottomsAndClosedPolygons) {
    Polygons const polygons{{{0, 0}, {160, 0}, {160, 160}, {0, 160}},
                            {{160, 160}, {160, 0}, {0, 0}, {0, 160}},
                            {{0, 0}, {160, 0}, {80, 160}, {0, 0}},
                            {{80, 0}, {160, 160}, {0, 160}},
                            {{-100, -50}, {-40, -90}, {33, -50}, {-20, 77}}};
    for (auto const& polygon : polygons) {
        Polygons trapezoids;
        ASSERT_TRUE(AppendConvexTrapezoids(polygon, trapezoids));
        EXPECT_EQ(Ours(trapezoids), OfBoost(polygon));
    }
}

TEST(ConvexTrapezoids, AreLeftToTheSetOperationForOtherPolygons) {
    constexpr int Far = (1 << 26) + 1;
    Polygons const polygons{{},
                            {{5, 5}},
                            {{5, 5}, {50, 50}},
                            {{5, 5}, {50, 50}, {5, 5}},
                            {{0, 0}, {160, 0}, {80, 0}, {80, 160}},                  // a corner on a side
                            {{0, 0}, {80, 0}, {160, 0}, {80, 160}},                  // a straight corner
                            {{0, 0}, {160, 0}, {80, 40}, {80, 160}},                 // a dent
                            {{0, 0}, {160, 160}, {160, 0}, {0, 160}},                // crossing itself
                            {{0, 100}, {60, -80}, {-95, 30}, {95, 30}, {-60, -80}},  // a star round its middle twice
                            {{0, 0}, {160, 1}, {160, 2}},                            // thin
                            {{0, 0}, {0, 0}, {160, 0}, {80, 160}},                   // a corner twice
                            {{0, 0}, {Far, 0}, {80, 160}},
                            {{0, 0}, {160, 0}, {80, -Far}}};
    for (auto const& polygon : polygons) {
        Polygons trapezoids;
        EXPECT_FALSE(AppendConvexTrapezoids(polygon, trapezoids)) << polygon.size();
        EXPECT_TRUE(trapezoids.empty());
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
