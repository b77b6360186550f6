#include "zone.hpp"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::privacy_mask {
namespace {

using Corners = geometry::Polygon<double>;

TEST(ParseZones, ReadsCornersInPixelsOrPercent) {
    struct Case {
        char const* name;
        char const* text;
        std::vector<Corners> zones;
    };
    Corners const triangle{{1, 2}, {30, 2}, {1.5, 40.25}};
    Case const cases[] = {
        {"nothing", "", {}},
        {"blanks", " \n\t", {}},
        {"semicolons", " ; ;;", {}},
        {"one zone", "1,2 30,2 1.5,40.25", {triangle}},
        {"blanks around commas and lines", "  1 , 2\n30,2\t1.5 ,40.25 ", {triangle}},
        {"a semicolon at the end", "1,2 30,2 1.5,40.25;", {triangle}},
        {"two zones", "1,2 30,2 1.5,40.25;0,0 -1,0 0,-1.5", {triangle, {{0, 0}, {-1, 0}, {0, -1.5}}}},
        {"the first corner again at the end", "1,2 30,2 1.5,40.25 1,2", {triangle}},
        {"a corner twice", "1,2 30,2 30,2 1.5,40.25", {triangle}},
        {"to sixteenths of a pixel", "0,0 1.03,0 0,1.04", {{{0, 0}, {1, 0}, {0, 1.0625}}}},
        {"percent", "0%,0% 50%,0% 0%,12.5%", {{{0, 0}, {50, 0}, {0, 12.5}}}},
        {"exponents", "0,0 1e2,0 0,1e1", {{{0, 0}, {100, 0}, {0, 10}}}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        Zones const zones = ParseZones(c.text);
        ASSERT_EQ(zones.size(), c.zones.size());
        for (std::size_t i = 0; i < zones.size(); ++i) EXPECT_EQ(zones[i].corners, c.zones[i]);
    }
    EXPECT_EQ(ParseZones("0%,0% 50%,0% 0%,12.5%")[0].unit, Zone::Unit::Percent);
    EXPECT_EQ(ParseZones("0,0 50,0 0,12.5")[0].unit, Zone::Unit::Pixels);
    EXPECT_EQ(ParseZones("0%,0% 50%,0% 0%,9%; 0,0 50,0 0,12.5")[1].unit, Zone::Unit::Pixels) << "each zone its own";
}

TEST(ParseZones, SaysWhereAndWhyATextIsNoZones) {
    struct Case {
        char const* text;
        char const* message;
    };
    Case const cases[] = {
        {"1,2 3",
         "Cannot use the zones: zone 1, corner 2, character 6: expected a comma between x and y, found the end"},
        {"1,2 3 4,5",
         "Cannot use the zones: zone 1, corner 2, character 7: expected a comma between x and y, found '4,5'"},
        {"1,2 3,x", "Cannot use the zones: zone 1, corner 2, character 7: expected a number, found 'x'"},
        {"1,2 3,", "Cannot use the zones: zone 1, corner 2, character 7: expected a number, found the end"},
        {"1,2,3",
         "Cannot use the zones: zone 1, corner 1, character 4: expected a blank or a semicolon after the corner, "
         "found ',3'"},
        {"0,0 9,0 0,9; nan,1",
         "Cannot use the zones: zone 2, corner 1, character 14: expected a number, found 'nan,1'"},
        {"inf,1", "Cannot use the zones: zone 1, corner 1, character 1: expected a number, found 'inf,1'"},
        {"1e999,1", "Cannot use the zones: zone 1, corner 1, character 1: expected a number, found '1e999,1'"},
        {"+1,1", "Cannot use the zones: zone 1, corner 1, character 1: expected a number, found '+1,1'"},
        {"100000.1,1",
         "Cannot use the zones: zone 1, corner 1, character 1: expected a number from -100000 to 100000 pixels, found "
         "'100000.1,1'"},
        {"1%,201%",
         "Cannot use the zones: zone 1, corner 1, character 4: expected a number from -100 to 200 percent, "
         "found '201%'"},
        {"1%,2",
         "Cannot use the zones: zone 1, corner 1, character 4: expected the whole zone in pixels, or each number "
         "of it with a percent sign, found '2'"},
        {"1,2 3%,4",
         "Cannot use the zones: zone 1, corner 2, character 5: expected the whole zone in pixels, or each "
         "number of it with a percent sign, found '3%,4'"},
        {"1,2 3,4", "Cannot use zone 1: it needs three corners or more that differ"},
        {"0,0 9,0 0,9;; 1,2 1,2 3,4 1,2", "Cannot use zone 2: it needs three corners or more that differ"},
        {"0,0 9,0 0,9 9,9",
         "Cannot use zone 1: its sides 2 and 4 cross or touch; give its corners in their order round it, or make two "
         "zones of it"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { ParseZones(c.text); }), c.message);
    }
}

TEST(ParseZones, RefusesZonesThatCrossOrTouchThemselves) {
    struct Case {
        char const* name;
        char const* text;
        bool fine;
    };
    Case const cases[] = {
        {"a square", "0,0 9,0 9,9 0,9", true},
        {"a square the other way round", "0,9 9,9 9,0 0,0", true},
        {"an arrow head", "0,0 9,5 0,9 4,5", true},
        {"a corner on a straight side", "0,0 4,0 9,0 9,9", true},
        {"corners in reading order", "0,0 9,0 0,9 9,9", false},
        {"a star", "5,0 8,9 0,3 9,3 2,9", false},
        {"loops that share a corner", "0,0 5,5 9,9 9,0 5,5 0,9", false},
        {"a corner on another side", "0,0 9,0 9,9 4,0 0,9", false},
        {"a bridge to a hole", "0,0 9,0 9,9 0,9 0,0 2,2 2,5 5,5 5,2 2,2", false},
        {"a spike", "0,0 9,0 9,9 9,12 9,9 0,9", false},
        {"all on a line", "0,0 5,5 9,9", false},
        {"all on a line, back and forth", "0,0 9,9 5,5", false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.fine) {
            EXPECT_NO_THROW(ParseZones(c.text));
        } else {
            EXPECT_THROW(ParseZones(c.text), std::invalid_argument);
        }
    }
}

TEST(ParseZones, TakesUpTo256ZonesOf256Corners) {
    std::string zones, corners;
    for (int i = 0; i < 256; ++i) zones += "0,0 9,0 0,9;";
    EXPECT_EQ(ParseZones(zones).size(), 256U);
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { ParseZones(zones + "0,0 9,0 0,9"); }),
              "Cannot use the zones: there are more than 256");
    for (int i = 0; i < 255; ++i) corners += std::to_string(i) + "," + std::to_string(i * i) + " ";
    EXPECT_EQ(ParseZones(corners + "-1,90000")[0].corners.size(), 256U);
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { ParseZones(corners + "-1,90000 -2,0"); }),
              "Cannot use zone 1: it has more than 256 corners");
}

TEST(Zone, PercentSpanTheFrameFromBorderToBorder) {
    EXPECT_EQ(ParseZones("0%,0% 100%,0% 100%,50% 0%,50%")[0].ToPixels({200, 101}),
              (Corners{{-0.5, -0.5}, {199.5, -0.5}, {199.5, 50}, {-0.5, 50}}));
    EXPECT_EQ(ParseZones("0,0 100,0 100,50 0,50")[0].ToPixels({200, 101}),
              (Corners{{0, 0}, {100, 0}, {100, 50}, {0, 50}}));
}

}  // namespace
}  // namespace qel::privacy_mask
