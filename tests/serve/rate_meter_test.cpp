#include "rate_meter.hpp"

#include <gtest/gtest.h>

namespace qel::serve {
namespace {

using namespace std::chrono_literals;

TEST(RateMeter, TellsTheRateOfTheLastSeconds) {
    RateMeter meter;
    RateMeter::Time const start{1h};
    EXPECT_EQ(meter.Get(start), 0);
    meter.Count(start);
    EXPECT_EQ(meter.Get(start), 0) << "one tells no rate";
    for (int i = 1; i <= 10; ++i) meter.Count(start + i * 40ms);
    EXPECT_DOUBLE_EQ(meter.Get(start + 400ms), 25);
    for (int i = 11; i <= 100; ++i) meter.Count(start + i * 40ms);
    EXPECT_DOUBLE_EQ(meter.Get(start + 4s), 25);
    EXPECT_DOUBLE_EQ(meter.Get(start + 5500ms), 38.0 / 3) << "half of the window has passed without any";
    EXPECT_EQ(meter.Get(start + 8s), 0);
    meter.Reset();
    EXPECT_EQ(meter.Get(start + 4s), 0);
}

}  // namespace
}  // namespace qel::serve
