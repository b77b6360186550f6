#include "number_text.hpp"

#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

namespace qel::configuration::detail {
namespace {

TEST(NumberText, IsTheShortestThatStandsForTheNumber) {
    struct Case {
        long double number;
        char const* text;
    };
    Case const cases[] = {
        {0, "0"},
        {-0.0L, "-0"},
        {-17, "-17"},
        {0.1, "0.1"},
        {2.5, "2.5"},
        {-1.0 / 3, "-0.3333333333333333"},
        {1e-7, "1e-07"},
        {123456.5, "123456.5"},
        // Whole numbers have no exponent as far as people write them out.
        {100000, "100000"},
        {999999999999999, "999999999999999"},
        {1e15, "1e+15"},
        {-1e300, "-1e+300"},
        // What no double holds keeps all its digits.
        {18446744073709551615.0L, "18446744073709551615"},
        {9223372036854775807.0L, "9223372036854775807"},
        {std::numeric_limits<double>::infinity(), "inf"},
    };
    for (Case const& c : cases) EXPECT_EQ(NumberText(c.number), c.text);
}

TEST(NumberText, IsReadBackAsTheSameNumber) {
    for (double number = 1.7e-300; number < 1e300; number *= 1.37e5) {
        EXPECT_EQ(std::strtod(NumberText(number).c_str(), nullptr), number);
        EXPECT_EQ(std::strtod(NumberText(-number).c_str(), nullptr), -number);
    }
}

}  // namespace
}  // namespace qel::configuration::detail
