#include "timeline.hpp"

#include <chrono>
#include <random>

#include <gtest/gtest.h>

namespace qel::host {
namespace {

using namespace std::chrono_literals;

TEST(Timeline, LeavesRisingTimesAlone) {
    Timeline timeline;
    for (auto const time : {70ms, 110ms, 111ms, 5000ms}) EXPECT_EQ(timeline.Place(time), time);
}

TEST(Timeline, GoesOnAfterAnInterruptionByTheTimeThatItTook) {
    Timeline timeline;
    EXPECT_EQ(timeline.Place(100ms), 100ms);
    EXPECT_EQ(timeline.Place(140ms), 140ms);
    timeline.Interrupt(3s);
    EXPECT_EQ(timeline.Place(0ms), 3140ms);
    EXPECT_EQ(timeline.Place(40ms), 3180ms);
    timeline.Interrupt(1s);
    EXPECT_EQ(timeline.Place(90000ms), 4180ms);
    EXPECT_EQ(timeline.Place(90040ms), 4220ms);
    timeline.Interrupt(0s);
    EXPECT_GT(timeline.Place(0ms), 4220ms);
}

TEST(Timeline, GoesOnOneStepAfterTheLastWhenTheClockIsSetBack) {
    Timeline timeline;
    EXPECT_EQ(timeline.Place(1000ms), 1000ms);
    EXPECT_EQ(timeline.Place(1020ms), 1020ms);
    EXPECT_EQ(timeline.Place(0ms), 1040ms);
    EXPECT_EQ(timeline.Place(20ms), 1060ms);
    EXPECT_EQ(timeline.Place(20ms), 1080ms);
    EXPECT_EQ(timeline.Place(40ms), 1100ms);
}

TEST(Timeline, OnlyEverRises) {
    std::minstd_rand random(7);
    auto const upTo = [&](int limit) { return std::uniform_int_distribution<int>(0, limit)(random); };
    Timeline timeline;
    Timeline::Time last = -1ns;
    for (int i = 0; i < 10000; ++i) {
        if (upTo(9) == 0) timeline.Interrupt(Timeline::Time(upTo(1000)));
        auto const time = timeline.Place(Timeline::Time(upTo(100)));
        ASSERT_GT(time, last);
        last = time;
    }
}

}  // namespace
}  // namespace qel::host
