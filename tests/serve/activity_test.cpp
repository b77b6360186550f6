#include "activity.hpp"

#include <thread>

#include <gtest/gtest.h>

namespace qel::serve {
namespace {

TEST(ActivityTest, SaysWhoKeepsTheThread) {
    Activity activity;
    EXPECT_EQ(activity.Describe(), "it is still at work");
    activity.Set(Activity::Kind::MakingAlgorithms);
    EXPECT_EQ(activity.Describe(), "its algorithms are still being made");
    activity.Set(Activity::Kind::Source);
    EXPECT_EQ(activity.Describe(), "its source has not returned");
    activity.Set(Activity::Kind::Publishing);
    EXPECT_EQ(activity.Describe(), "what it has found is still being taken");
    auto const place = std::make_shared<std::atomic<std::size_t>>(0);
    activity.SetAlgorithms({"motion", "classifier"}, place);
    activity.Set(Activity::Kind::Algorithms);
    EXPECT_EQ(activity.Describe(), "the algorithm 'motion' has not returned");
    *place = 1;
    EXPECT_EQ(activity.Describe(), "the algorithm 'classifier' has not returned");
}

TEST(ActivityTest, TellsWhenSomethingHangsAndNotWhenItWaits) {
    using namespace std::chrono_literals;
    Activity activity;
    struct Case {
        Activity::Kind kind;
        bool canHang;
    };
    constexpr Case Cases[] = {
        {Activity::Kind::Waiting, false},   {Activity::Kind::MakingAlgorithms, true}, {Activity::Kind::Source, true},
        {Activity::Kind::Algorithms, true}, {Activity::Kind::Publishing, true},
    };
    for (Case const& c : Cases) {
        activity.Set(c.kind);
        EXPECT_FALSE(activity.IsHanging(1h));
        std::this_thread::sleep_for(2ms);
        EXPECT_EQ(activity.IsHanging(1ms), c.canHang);
    }
}

}  // namespace
}  // namespace qel::serve
