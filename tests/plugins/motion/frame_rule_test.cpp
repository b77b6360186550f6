#include "frame_rule.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace qel::motion {
namespace {

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr int Level = 1 << FrameRule::LevelBits, Spread = 1 << FrameRule::SpreadBits;

FrameRule RuleOf(Parameters const& parameters, FrameClock const& clock = {.coloured = true}) {
    return MakeFrameRule(parameters, clock);
}

/// What a mean gains in a frame, as the pixel loop has it.
int Step(Pace const& pace, int difference) { return ((difference + pace.dither) * pace.rate) >> 16; }

TEST(FrameRule, StatesSettingsInTheUnitsOfThePixelLoop) {
    for (double const value : {2.0, 6.5, 15.0}) {
        EXPECT_EQ((3 * Spread * RuleOf({.threshold = value}).threshold) >> 16, 3 * value * Level) << "three levels";
    }
    for (double const value : {0.5, 3.0, 8.0}) {
        EXPECT_NEAR(RuleOf({.noise = value}).smallestSpread, value * Spread, 0.001 * value * Spread);
    }
    for (double const value : {0.0, 0.5, 2.0, 3.5}) {
        EXPECT_EQ((4 * 10 * Level * RuleOf({.colourWeight = value}).colourWeight) >> 16, 10 * value * Level);
    }
    for (double const value : {0.0, 0.6, 1.0}) {
        EXPECT_NEAR((200 * Level * RuleOf({.shadowDepth = value}).shadowDepth) >> 16, 200 * value * Level, 1);
    }
    for (double const value : {0.0, 10.0, 31.0}) {
        EXPECT_EQ(RuleOf({.shadowColour = value}).shadowColour, value * Level);
    }
}

TEST(FrameRule, ClampsSettingsToTheirRanges) {
    constexpr double huge = 1e300;
    auto const least = RuleOf({-huge, -huge, -huge, -huge, -huge, -5, -5, 0});
    auto const most = RuleOf({huge, huge, huge, huge, huge, 1 << 30, 1 << 30, 0});
    auto const none = RuleOf({Nan, Nan, Nan, Nan, Nan, 1, 64, Nan});
    auto const low = RuleOf({2, 0.5, 0, 0, 0, 1, 64, 0}), high = RuleOf({15, 8, 3.9, 1, 31, 8192, 32000, 0});
    auto const expectEqual = [](FrameRule const& rule, FrameRule const& expected) {
        EXPECT_EQ(rule.threshold, expected.threshold);
        EXPECT_EQ(rule.smallestSpread, expected.smallestSpread);
        EXPECT_EQ(rule.colourWeight, expected.colourWeight);
        EXPECT_EQ(rule.shadowDepth, expected.shadowDepth);
        EXPECT_EQ(rule.shadowColour, expected.shadowColour);
        EXPECT_EQ(rule.settled.rate, expected.settled.rate);
        EXPECT_EQ(rule.mostHits, expected.mostHits);
    };
    expectEqual(least, low);
    expectEqual(most, high);
    expectEqual(none, low);
    EXPECT_EQ(low.mostHits, 64);
    EXPECT_EQ(high.mostHits, 32000);
}

TEST(FrameRule, BeginsWithTwiceTheSmallestSpreadAsFarAsThatGoes) {
    for (double const noise : {0.5, 3.0, 7.9}) {
        EXPECT_EQ(RuleOf({.noise = noise}).firstSpread, 2 * RuleOf({.noise = noise}).smallestSpread);
    }
    EXPECT_EQ(RuleOf({.noise = 8}).firstSpread, FrameRule::LargestSpread);
}

TEST(FrameRule, BelievesHalfAsDeepAShadowWithoutColour) {
    FrameClock const grey{.coloured = false};
    for (double const depth : {0.0, 0.6, 1.0}) {
        double const darkest = 1 - (1 - depth) / 2;
        EXPECT_NEAR((200 * Level * RuleOf({.shadowDepth = depth}, grey).shadowDepth) >> 16, 200 * darkest * Level, 1);
    }
}

TEST(FrameRule, MovesAMeanByItsTimeConstant) {
    for (int const frames : {2, 4, 16, 64, 300, 8192}) {
        int difference = 100 * Level;
        for (int frame = 0; frame < frames; ++frame) {
            FrameClock const clock{.frame = static_cast<std::uint32_t>(frame)};
            difference -= Step(RuleOf({.learningFrames = frames}, clock).settled, difference);
        }
        double const left = std::pow(1 - 1.0 / frames, frames);
        EXPECT_NEAR(difference / (100.0 * Level), left, 0.02) << frames << " frames";
    }
}

TEST(FrameRule, MovesAMeanInTheLongRunAlsoWhereAFrameMovesItByLessThanItsUnit) {
    for (int const difference : {40, 128, -40, -128, 0}) {
        int moved = 0;
        for (std::uint32_t frame = 0; frame < 8192; ++frame) {
            moved += Step(RuleOf({.learningFrames = 8192}, {.frame = frame}).settled, difference);
        }
        EXPECT_NEAR(moved, difference, 32) << "the dither has 256 steps of 32";
        EXPECT_EQ(moved == 0, difference == 0) << difference;
    }
}

TEST(FrameRule, SpreadsTheStepsOfADitherEvenlyOverEachStretchOfFrames) {
    for (std::uint32_t first = 0; first < 256; first += 16) {
        std::set<int> sixteenths;
        for (std::uint32_t frame = first; frame < first + 16; ++frame) {
            sixteenths.insert(RuleOf({.learningFrames = 256}, {.frame = frame}).settled.dither / 16);
        }
        EXPECT_EQ(sixteenths.size(), 16U);
    }
}

TEST(FrameRule, FollowsNewMeansQuicklyButNeverMoreSlowlyThanSettledOnes) {
    struct Case {
        int learning, few, some, many, settled;  // time constants
    };
    for (Case const& c : {Case{300, 4, 16, 64, 300}, {32, 4, 16, 32, 32}, {10, 4, 10, 10, 10}, {3, 3, 3, 3, 3}}) {
        SCOPED_TRACE(c.learning);
        auto const rule = RuleOf({.learningFrames = c.learning});
        EXPECT_EQ(rule.few.rate, 65536 / c.few);
        EXPECT_EQ(rule.some.rate, 65536 / c.some);
        EXPECT_EQ(rule.many.rate, 65536 / c.many);
        EXPECT_EQ(rule.settled.rate, 65536 / c.settled);
    }
    EXPECT_EQ(RuleOf({.learningFrames = 1}).settled.rate, 32767) << "half the way: no more fits";
}

TEST(FrameRule, FollowsTheLightMoreQuicklyTheFurtherItHasDrifted) {
    struct Case {
        int drift, frames;
    };
    for (Case const& c : {Case{0, 300}, {127, 300}, {128, 64}, {255, 64}, {256, 16}, {511, 16}, {512, 4}, {16000, 4}}) {
        SCOPED_TRACE(c.drift);
        EXPECT_EQ(RuleOf({.learningFrames = 300}, {.drift = c.drift}).settled.rate, 65536 / c.frames);
        EXPECT_EQ(RuleOf({.learningFrames = 300}, {.drift = -c.drift}).settled.rate, 65536 / c.frames);
        EXPECT_EQ(RuleOf({.learningFrames = 10}, {.drift = c.drift}).settled.rate, 65536 / std::min(c.frames, 10));
    }
}

TEST(FrameRule, LearnsColoursByTheAgeOfTheModel) {
    for (std::uint32_t const frame : {0U, 15U, 16U, 63U, 64U, 1000U}) {
        auto const rule = RuleOf({}, {.frame = frame});
        Pace const expected = frame < 16 ? rule.few : frame < 64 ? rule.some : rule.settled;
        EXPECT_EQ(rule.chroma.rate, expected.rate) << frame;
        EXPECT_EQ(rule.chroma.dither, expected.dither) << frame;
    }
}

TEST(FrameRule, LetsCandidatesTakeOverAtOnceAfterAGlobalChangeAndAgeInEachFourthFrame) {
    EXPECT_EQ(RuleOf({.absorbFrames = 250}).mostHits, 250);
    EXPECT_EQ(RuleOf({.absorbFrames = 250}, {.globalChange = true}).mostHits, FrameRule::TrustedHits);
    for (std::uint32_t frame = 0; frame < 9; ++frame) {
        EXPECT_EQ(RuleOf({}, {.frame = frame}).candidateDecay, frame % 4 == 0 ? 1 : 0);
    }
}

}  // namespace
}  // namespace qel::motion
