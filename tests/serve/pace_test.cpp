#include "pace.hpp"

#include <gtest/gtest.h>

namespace qel::serve {
namespace {

using namespace std::chrono_literals;

TEST(Pace, FollowsTheTimesOfTheFramesFromTheFirstOneOn) {
    Pace pace;
    Pace::Time const start{1h};
    EXPECT_EQ(pace.GetDue(5s, start), start);
    EXPECT_EQ(pace.GetDue(5040ms, start + 3ms), start + 40ms);
    EXPECT_EQ(pace.GetDue(5080ms, start + 60ms), start + 80ms);
    EXPECT_EQ(pace.GetDelay(), 0s);
}

TEST(Pace, MakesUpForSmallDelaysOnly) {
    Pace pace;
    Pace::Time const start{1h};
    (void)pace.GetDue(0s, start);
    EXPECT_EQ(pace.GetDue(40ms, start + 500ms), start + 40ms) << "the frames after it hurry";
    EXPECT_EQ(pace.GetDelay(), 0s);
    Pace::Time const late = start + 80ms + 501ms;
    EXPECT_EQ(pace.GetDue(80ms, late), late) << "all others are later";
    EXPECT_EQ(pace.GetDue(120ms, late), late + 40ms);
    EXPECT_EQ(pace.GetDelay(), 501ms);
}

TEST(Pace, NeitherWaitsForEverNorGoesBack) {
    Pace pace;
    Pace::Time const start{1h};
    (void)pace.GetDue(0s, start);
    EXPECT_EQ(pace.GetDue(100h, start), start + 10s);
    EXPECT_EQ(pace.GetDue(100h + 40ms, start + 10s), start + 10s + 40ms);
    EXPECT_EQ(pace.GetDue(1s, start + 11s), start + 11s);
    EXPECT_EQ(pace.GetDelay(), 0s);
}

}  // namespace
}  // namespace qel::serve
