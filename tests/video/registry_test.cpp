#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/registry/info.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/node/map.hpp"

namespace qel::algorithm::video::registry {
namespace {

using configuration::Property;
using hash::MurmurThree32;
using inference::backend::Manager;

Info MakeInfo(char const* name) { return {MurmurThree32(name), name, {}, {}, {}}; }

TEST(RegistryInfo, HoldsItsIdentifierAndTheVeryTextOfItsName) {
    static constexpr char Name[] = "qel.algorithm.video.Test";
    Info const info(MurmurThree32(7), Name, {}, {}, {});
    EXPECT_EQ(info.GetTypeNameId(), MurmurThree32(7));
    EXPECT_EQ(&info.GetTypeNameId(), &info.GetTypeNameId());
    EXPECT_EQ(info.GetTypeName(), &Name[0]);
}

TEST(RegistryInfo, TakesItsFunctionsByMove) {
    auto const token = std::make_shared<int>();
    static std::vector<Property> const none;
    Info::Make make = [token](Manager&) { return std::shared_ptr<Algorithm>(); };
    Info::Properties properties = [token]() -> std::vector<Property> const& { return none; };
    Info::CreateNodes nodes = [token](Manager&, std::shared_ptr<configuration::Node> const&) {};
    Info const info(MurmurThree32(7), "test", std::move(make), std::move(properties), std::move(nodes));
    EXPECT_EQ(token.use_count(), 4);
}

TEST(RegistryInfo, GivesItsFactory) {
    Manager manager;
    Manager* seen = nullptr;
    auto const made = std::make_shared<Algorithm>(MurmurThree32(7), Type::Inplace, std::vector<media::ColourFormat>());
    Info const info(MurmurThree32(7), "test",
                    [&](Manager& given) {
                        seen = &given;
                        return made;
                    },
                    {}, {});
    EXPECT_EQ(info.GetMake()(manager), made);
    EXPECT_EQ(seen, &manager);
    EXPECT_EQ(&info.GetMake(), &info.GetMake());
}

TEST(RegistryInfo, GivesAnEmptyFactoryThatThrowsWhenCalled) {
    Manager manager;
    Info const info = MakeInfo("test");
    EXPECT_FALSE(info.GetMake());
    EXPECT_THROW(info.GetMake()(manager), std::bad_function_call);
}

TEST(RegistryInfo, WithoutAPropertyFunctionSharesOneEmptyList) {
    Info const first = MakeInfo("first");
    Info const second = MakeInfo("second");
    EXPECT_TRUE(first.GetProperties().empty());
    EXPECT_EQ(&first.GetProperties(), &second.GetProperties());
    auto const* const shared = &first.GetProperties();
    std::thread([shared] { EXPECT_EQ(&MakeInfo("third").GetProperties(), shared); }).join();
}

TEST(RegistryInfo, GivesTheVeryListOfItsPropertyFunction) {
    std::vector<Property> const properties(2);
    int calls = 0;
    Info const info(MurmurThree32(7), "test", {},
                    [&]() -> std::vector<Property> const& {
                        ++calls;
                        return properties;
                    },
                    {});
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(&info.GetProperties(), &properties);
    EXPECT_EQ(calls, 1);
}

TEST(RegistryInfoDeathTest, APropertyFunctionThatThrowsEndsTheProcess) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    Info const info(MurmurThree32(7), "test", {},
                    []() -> std::vector<Property> const& { throw std::runtime_error("no properties today"); }, {});
    EXPECT_TRUE(noexcept(info.GetProperties()));
    EXPECT_DEATH(info.GetProperties(), "no properties today");
}

TEST(RegistryInfo, CreatesNodesWithTheManagerAndACopyOfTheNode) {
    Manager manager;
    Manager* seenManager = nullptr;
    std::shared_ptr<configuration::Node> seenNode;
    Info const info(MurmurThree32(7), "test", {}, {}, [&](Manager& given, std::shared_ptr<configuration::Node> node) {
        seenManager = &given;
        seenNode = std::move(node);
    });
    std::shared_ptr<configuration::Node> const node = configuration::node::Map::Make("settings", "", {});
    info.CreateConfigNodes(manager, node);
    EXPECT_EQ(seenManager, &manager);
    EXPECT_EQ(seenNode, node);
}

TEST(RegistryInfo, WithoutANodeFunctionIgnoresTheCall) {
    Manager manager;
    std::shared_ptr<configuration::Node> const node = configuration::node::Map::Make("settings", "", {});
    long const owners = node.use_count();
    MakeInfo("test").CreateConfigNodes(manager, node);
    MakeInfo("test").CreateConfigNodes(manager, nullptr);
    EXPECT_EQ(node.use_count(), owners);
}

TEST(RegistryInfo, PassesOnWhatItsNodeFunctionThrows) {
    Manager manager;
    Info const info(MurmurThree32(7), "test", {}, {},
                    [](Manager&, std::shared_ptr<configuration::Node> const&) { throw std::runtime_error("full"); });
    EXPECT_THROW(info.CreateConfigNodes(manager, nullptr), std::runtime_error);
}

TEST(RegistryGet, IsOneObjectForEveryCallAndEveryThread) {
    std::vector<type::Registry<Info>*> seen(8);
    std::vector<std::thread> threads;
    for (auto& slot : seen) threads.emplace_back([&slot] { slot = &Get(); });
    for (std::thread& thread : threads) thread.join();
    for (auto* const registry : seen) EXPECT_EQ(registry, &Get());
}

TEST(RegistryGet, HasAMaximumLoadFactorOfOne) { EXPECT_EQ(Get().GetMap()->max_load_factor(), 1.0F); }

TEST(RegistryGet, ThrowsForAMissingEntry) {
    try {
        Get().GetMap()->at(MurmurThree32("nobody has this name"));
        ADD_FAILURE() << "nothing was thrown";
    } catch (std::out_of_range const& error) {
        EXPECT_STREQ(error.what(), "unordered_map::at");
    }
    EXPECT_EQ(Get().GetMap()->count(MurmurThree32("nobody has this name")), 0U);
}

TEST(RegistryRegister, EntersUnderTheIdentifierThatTheInfoCarries) {
    EXPECT_TRUE(Register(Info(MurmurThree32(0x1234), "name of another identifier", {}, {}, {})));
    EXPECT_STREQ(Get().GetMap()->at(MurmurThree32(0x1234)).GetTypeName(), "name of another identifier");
    EXPECT_EQ(Get().GetMap()->count(MurmurThree32("name of another identifier")), 0U);
}

TEST(RegistryRegister, KeepsTheFirstEntryOfAnIdentifier) {
    EXPECT_TRUE(Register(Info(MurmurThree32(0x5678), "first", {}, {}, {})));
    EXPECT_FALSE(Register(Info(MurmurThree32(0x5678), "second", {}, {}, {})));
    EXPECT_FALSE(Register(Info(MurmurThree32(0x5678), nullptr, {}, {}, {})));
    EXPECT_STREQ(Get().GetMap()->at(MurmurThree32(0x5678)).GetTypeName(), "first");
}

TEST(RegistryRegister, TakesEntriesFromManyThreadsAndKeepsTheFirstOfEachIdentifier) {
    constexpr std::uint32_t Entries = 50;
    std::vector<std::thread> threads;
    std::atomic<std::uint32_t> entered = 0;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&entered] {
            for (std::uint32_t i = 0; i < Entries; ++i) {
                if (Register(Info(MurmurThree32(0x10000 + i), "shared", {}, {}, {}))) ++entered;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(entered, Entries);
}

}  // namespace
}  // namespace qel::algorithm::video::registry
