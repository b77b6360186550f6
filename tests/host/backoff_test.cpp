#include "backoff.hpp"

#include <algorithm>
#include <chrono>
#include <set>

#include <gtest/gtest.h>

namespace qel::host {
namespace {

using namespace std::chrono_literals;

TEST(Backoff, DoublesUpToItsLimitAndTakesUpToAHalfOffByChance) {
    for (std::uint32_t seed = 0; seed < 50; ++seed) {
        Backoff backoff(500ms, 3000ms, seed);
        for (int round = 0; round < 2; ++round) {
            for (auto const whole : {500ms, 1000ms, 2000ms, 3000ms, 3000ms, 3000ms}) {
                auto const wait = backoff.Next();
                EXPECT_LE(wait, whole);
                EXPECT_GE(wait, whole / 2);
            }
            backoff.Reset();
        }
    }
}

TEST(Backoff, DiffersFromOneToTheNext) {
    std::set<std::chrono::milliseconds> waits;
    for (std::uint32_t seed = 0; seed < 50; ++seed) waits.insert(Backoff(10000ms, 10000ms, seed).Next());
    EXPECT_GT(waits.size(), 40U);
    EXPECT_LT(*waits.begin(), 6000ms);
    EXPECT_GT(*waits.rbegin(), 9000ms);
}

}  // namespace
}  // namespace qel::host
