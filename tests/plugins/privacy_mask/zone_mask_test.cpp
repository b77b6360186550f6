#include "zone_mask.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "reference/privacy_mask.hpp"

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;
using Polygon = geometry::Polygon<double>;

bool IsSet(BitMask const& mask, std::size_t x, std::size_t y) {
    return (mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32) & 1) != 0;
}

BitMask Draw(Zones zones, BitMask::Size size) {
    ZoneMask mask;
    mask.Update(std::make_shared<Zones const>(std::move(zones)), size);
    return mask.Get();
}

BitMask Draw(char const* text, BitMask::Size size) { return Draw(ParseZones(text), size); }

std::vector<std::string> Show(BitMask const& mask) {
    std::vector<std::string> rows;
    for (unsigned int y = 0; y < mask.GetSize().height; ++y) {
        rows.emplace_back();
        for (unsigned int x = 0; x < mask.GetSize().width; ++x) rows.back() += IsSet(mask, x, y) ? '#' : '.';
    }
    return rows;
}

void ExpectClearPadding(BitMask const& mask) {
    for (std::size_t y = 0; y < mask.GetSize().height; ++y) {
        for (std::size_t x = mask.GetSize().width; x < 32 * mask.GetStride(); ++x) {
            ASSERT_FALSE(IsSet(mask, x, y)) << "padding of row " << y;
        }
    }
}

/// Every pixel that a zone touches is set, and none that is further away than the margin.
void ExpectCovered(BitMask const& mask, Zones const& zones) {
    constexpr double Rounding = 1e-9;
    auto const size = mask.GetSize();
    std::vector<Polygon> polygons;
    for (Zone const& zone : zones) polygons.push_back(zone.ToPixels(size));
    for (unsigned int y = 0; y < size.height; ++y) {
        for (unsigned int x = 0; x < size.width; ++x) {
            auto const touched = [&](double reach) {
                return std::any_of(polygons.begin(), polygons.end(),
                                   [&](Polygon const& p) { return reference::Touches(p, x, y, reach); });
            };
            if (touched(0.75 - Rounding)) {
                ASSERT_TRUE(IsSet(mask, x, y)) << "column " << x << ", row " << y << " is uncovered";
            } else if (!touched(0.75 + Rounding)) {
                ASSERT_FALSE(IsSet(mask, x, y)) << "column " << x << ", row " << y << " is too far away";
            }
        }
    }
    ExpectClearPadding(mask);
}

TEST(ZoneMask, CoversEveryPixelThatAZoneTouches) {
    EXPECT_EQ(Show(Draw("1,1 3,1 3,2 1,2", {6, 4})),
              (std::vector<std::string>{"......", ".###..", ".###..", "......"}));
    EXPECT_EQ(Show(Draw("1.5,1 3,1 3,1.4 1.5,1.4", {6, 4})),
              (std::vector<std::string>{"......", ".###..", ".###..", "......"}))
        << "on the border of a pixel, and within the margin";
    EXPECT_EQ(Show(Draw("2,1.9 2.1,1.9 2.1,2", {6, 4})),
              (std::vector<std::string>{"......", "......", "..#...", "......"}))
        << "smaller than a pixel";
    EXPECT_EQ(Show(Draw("-9,-9 99,-9 99,99 -9,99", {3, 1})), (std::vector<std::string>{"###"}));
    EXPECT_EQ(Show(Draw("-9,-9 99,-9 99,99 -9,99", {1, 1})), (std::vector<std::string>{"#"}));
    EXPECT_EQ(Show(Draw("0%,0% 100%,0% 100%,100% 0%,100%", {3, 2})), (std::vector<std::string>{"###", "###"}));
    EXPECT_EQ(Show(Draw("9,9 12,9 12,12", {3, 2})), (std::vector<std::string>{"...", "..."})) << "outside";
    EXPECT_EQ(Show(Draw("", {3, 2})), (std::vector<std::string>{"...", "..."}));
}

TEST(ZoneMask, OverlappingZonesAddUp) {
    EXPECT_EQ(Show(Draw("0,0 2,0 2,2 0,2; 1,1 3,1 3,3 1,3", {5, 5})),
              (std::vector<std::string>{"###..", "####.", "####.", ".###.", "....."}));
    BitMask const once = Draw("2,3 40,5 30,44", {50, 50});
    EXPECT_EQ(Draw("2,3 40,5 30,44; 2,3 40,5 30,44", {50, 50}), once) << "the same zone twice";
    EXPECT_EQ(Draw("2,3 40,5 30,44; 30,44 40,5 2,3", {50, 50}), once) << "and the other way round";
}

TEST(ZoneMask, CoversRandomZonesAsASlowModelDoes) {
    std::mt19937 random(20240611);
    auto const number = [&random](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    BitMask::Size const sizes[] = {{1, 1}, {1, 40}, {40, 1}, {2, 2}, {31, 33}, {32, 32}, {33, 31}, {65, 47}, {97, 64}};
    std::size_t drawn = 0;
    for (int i = 0; i < 1200; ++i) {
        BitMask::Size const size = sizes[static_cast<std::size_t>(i) % std::size(sizes)];
        Zones zones;
        for (int count = i % 3; count >= 0; --count) {
            // A star around a point: it does not cross itself.
            double const x = number(-20, size.width + 20.0), y = number(-20, size.height + 20.0);
            double const wide = std::pow(10, number(-1, 2.5)), high = i % 2 == 0 ? wide : std::pow(10, number(-1, 2.5));
            std::string text;
            int const corners = 3 + static_cast<int>(number(0, 9));
            for (int corner = 0; corner < corners; ++corner) {
                double const angle = 2 * 3.14159265358979 * (corner + number(0, 0.9)) / corners;
                double const radius = number(0.1, 1);
                text += std::to_string(x + wide * radius * std::cos(angle)) + "," +
                        std::to_string(y + high * radius * std::sin(angle)) + " ";
            }
            SCOPED_TRACE(text);
            try {
                zones.push_back(ParseZones(text).at(0));
            } catch (std::invalid_argument const&) {
                continue;  // so thin that it touches itself once it is rounded
            }
        }
        SCOPED_TRACE(i);
        drawn += zones.size();
        ExpectCovered(Draw(zones, size), zones);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(drawn, 2000U);
}

TEST(ZoneMask, CoversZonesThatAreLargerThanTheFillsArithmetic) {
    Zones const zones = ParseZones("-90000,-80000 99999,-3 8190,4300 60000,100000 -70000,90000");
    BitMask const mask = Draw(zones, {8192, 4320});
    for (unsigned int y = 0; y < 4320; y += 37) {
        for (unsigned int x = y % 41; x < 8192; x += 41) {
            ASSERT_EQ(IsSet(mask, x, y), reference::Touches(zones[0].corners, x, y, 0.75)) << x << ", " << y;
        }
    }
    BitMask const whole = Draw("0%,0% 100%,0% 100%,100% 0%,100%", {8192, 4320});
    EXPECT_TRUE(std::all_of(whole.GetData().begin(), whole.GetData().end(), [](auto word) { return word == ~0U; }));
}

TEST(ZoneMask, IsDrawnAnewOnlyForOtherZonesOrAnotherSize) {
    auto const zones = std::make_shared<Zones const>(ParseZones("1,1 3,1 3,2"));
    ZoneMask mask;
    EXPECT_TRUE(mask.Update(zones, {8, 8}));
    EXPECT_FALSE(mask.Update(zones, {8, 8}));
    EXPECT_TRUE(mask.Update(zones, {8, 9}));
    EXPECT_TRUE(mask.Update(std::make_shared<Zones const>(*zones), {8, 9}));
    EXPECT_FALSE(mask.Update(nullptr, {0, 0}) && !mask.Get().GetData().empty());
}

}  // namespace
}  // namespace qel::privacy_mask
