#include "qel/type/registry.hpp"

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace qel::type {
namespace {

using hash::MurmurThree32;

TEST(RegistryLock, RunsItsActionExactlyOnce) {
    std::unordered_map<MurmurThree32, int> const map;
    int calls = 0;
    {
        registry::Lock first(map, [&] { ++calls; });
        registry::Lock const second(std::move(first));
        EXPECT_EQ(calls, 0);
    }
    EXPECT_EQ(calls, 1);
}

TEST(RegistryLock, WithoutAnActionReleasesNothing) {
    std::unordered_map<MurmurThree32, int> const map = {{MurmurThree32(1), 7}};
    registry::Lock const lock(map, {});
    EXPECT_EQ(lock->at(MurmurThree32(1)), 7);
    EXPECT_EQ((*lock).size(), 1U);
}

TEST(Registry, KeepsTheFirstEntryOfAnIdentifier) {
    Registry<std::string> registry;
    EXPECT_TRUE(registry.Register(MurmurThree32("a"), "first"));
    EXPECT_FALSE(registry.Register(MurmurThree32("a"), "second"));
    EXPECT_EQ(registry.GetMap()->at(MurmurThree32("a")), "first");
    EXPECT_EQ(registry.GetMap()->size(), 1U);
}

TEST(Registry, HasAMaximumLoadFactorOfOne) { EXPECT_EQ(Registry<int>().GetMap()->max_load_factor(), 1.0F); }

TEST(Registry, HoldsItsMutexForTheLifeOfALock) {
    Registry<int> registry;
    auto lock = std::make_unique<registry::Lock<Registry<int>::Map>>(registry.GetMap());
    std::thread writer([&] { registry.Register(MurmurThree32("a"), 1); });
    EXPECT_EQ((*lock)->size(), 0U);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ((*lock)->size(), 0U);
    lock.reset();
    writer.join();
    EXPECT_EQ(registry.GetMap()->size(), 1U);
}

TEST(Registry, TakesReadersAndWritersFromManyThreads) {
    Registry<std::uint32_t> registry;
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (std::uint32_t i = 0; i < 500; ++i) {
                registry.Register(MurmurThree32(4 * i + t), i);
                EXPECT_EQ(registry.GetMap()->at(MurmurThree32(4 * i + t)), i);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(registry.GetMap()->size(), 2000U);
}

}  // namespace
}  // namespace qel::type
