#include <ios>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "qel/geometry/dimension.hpp"
#include "qel/geometry/normalized/value.hpp"
#include "qel/geometry/point.hpp"
#include "qel/geometry/polygon.hpp"
#include "qel/geometry/rectangle.hpp"

namespace qel::geometry {
namespace {

TEST(Dimension, WritesCompactJson) {
    std::ostringstream stream;
    stream << Dimension<unsigned int, 2>{640, 480};
    EXPECT_EQ(stream.str(), R"({"width":640,"height":480})");
}

TEST(Dimension, WritesNumbersWithTheFlagsOfTheStream) {
    std::ostringstream stream;
    stream << std::hex << std::showbase << Dimension<unsigned int, 2>{255, std::numeric_limits<unsigned int>::max()};
    EXPECT_EQ(stream.str(), R"({"width":0xff,"height":0xffffffff})");
}

TEST(GeometryTypes, AreAggregatesInTheOrderOfTheirNames) {
    constexpr Point<unsigned int, 2> Corner{3, 4};
    static_assert(Corner.x == 3 && Corner.y == 4);
    constexpr Rectangle<int> Box{-1, 2, 3, 4};
    static_assert(Box.x0 == -1 && Box.y0 == 2 && Box.x1 == 3 && Box.y1 == 4);
    constexpr normalized::Value<unsigned short> Half{32768};
    static_assert(Half.value == 32768);
    EXPECT_EQ((Dimension<int, 2>{}), (Dimension<int, 2>{0, 0}));
}

TEST(Polygon, IsAnOrderedListOfPoints) {
    Polygon<int> triangle{{0, 0}, {16, 0}};
    triangle.push_back({0, 16});
    EXPECT_EQ(triangle.size(), 3U);
    EXPECT_EQ(triangle[1], (Point<int, 2>{16, 0}));
    EXPECT_EQ(triangle, (Polygon<int>(triangle.begin(), triangle.end())));
    EXPECT_NE(triangle, (Polygon<int>{{16, 0}, {0, 0}, {0, 16}}));
    EXPECT_TRUE(Polygon<int>().empty());
}

}  // namespace
}  // namespace qel::geometry
