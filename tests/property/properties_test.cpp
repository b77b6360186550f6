#include "qel/property/properties.hpp"

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "property/tank.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::property {
namespace {

using configuration::node::Map;
using configuration::node::Primitive;
using qel::test::MessageOf;
using test::Base;
using test::ChangesSchema;
using test::LevelSchema;
using test::ModeSchema;
using test::Tank;

std::shared_ptr<void> Untyped(std::shared_ptr<Tank> const& tank) { return std::shared_ptr<Base>(tank); }

std::vector<Schema> AllSchemas() { return {LevelSchema(), ModeSchema(), ChangesSchema()}; }

std::shared_ptr<Map> MakeMap() {
    auto map = Map::Make("settings");
    map->Schema({{"level", "", 3.0}, {"mode", "", "fast", {}, std::set<std::string>{"fast", "slow"}}});
    return map;
}

TEST(Properties, ReachesItsPropertiesByName) {
    auto const tank = std::make_shared<Tank>();
    Properties const properties(Untyped(tank), AllSchemas());
    EXPECT_TRUE(properties);
    properties["level"].Set(2.0);
    properties["mode"].Set("fast");
    EXPECT_EQ(tank->GetLevel(), 2.0);
    EXPECT_EQ(tank->GetMode(), "fast");
    EXPECT_EQ(properties["changes"].Get<std::uint32_t>(), 2U);
    EXPECT_EQ(&properties["level"], &properties["level"]);
}

TEST(Properties, ListsAllInTheOrderOfTheSchemas) {
    Properties const properties(Untyped(std::make_shared<Tank>()), AllSchemas());
    std::vector<std::string> names;
    for (Property const& property : properties.GetAll()) names.push_back(property.GetName());
    EXPECT_EQ(names, (std::vector<std::string>{"level", "mode", "changes"}));
}

TEST(Properties, RefusesAnUnknownNameWithTheNamesThereAre) {
    Properties const properties(Untyped(std::make_shared<Tank>()), AllSchemas());
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { properties["levels"]; }),
              "There is no property 'levels', only: level, mode, changes");
    Properties const none(Untyped(std::make_shared<Tank>()), {});
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { none[""]; }), "There is no property '', only: none");
}

TEST(Properties, RefusesTwoSchemasOfOneName) {
    std::weak_ptr<Tank> watch;
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] {
                  auto const tank = std::make_shared<Tank>();
                  watch = tank;
                  Properties(Untyped(tank), {LevelSchema(), ModeSchema(), LevelSchema()});
              }),
              "level: there are two properties of this name");
    EXPECT_TRUE(watch.expired());
}

TEST(Properties, WithoutAnOwnerIsFalseAndCannotBeUsed) {
    Binder binder(MakeMap());
    Properties const properties(binder, nullptr, AllSchemas());
    EXPECT_FALSE(properties);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { properties["level"].Set(1.0); }), "level: the property has no owner");
}

TEST(Properties, WithoutSchemasIsStillUsable) { EXPECT_TRUE(Properties(Untyped(std::make_shared<Tank>()), {})); }

TEST(Properties, EqualityComparesTheSchemasInTheirOrderAndNothingElse) {
    auto const tank = std::make_shared<Tank>();
    auto const make = [&tank](std::vector<Schema> schemas) { return Properties(Untyped(tank), std::move(schemas)); };
    Properties const properties = make({LevelSchema(), ModeSchema()});
    EXPECT_TRUE(properties == properties);
    EXPECT_TRUE(properties == make({LevelSchema(), ModeSchema()}));
    EXPECT_TRUE(properties == Properties(Untyped(std::make_shared<Tank>()), {LevelSchema(), ModeSchema()}));
    EXPECT_TRUE(properties == Properties(nullptr, {LevelSchema(), ModeSchema()}));
    EXPECT_FALSE(properties == make({ModeSchema(), LevelSchema()}));
    EXPECT_FALSE(properties == make({LevelSchema()}));
    EXPECT_FALSE(make({LevelSchema()}) == properties);
    EXPECT_TRUE(properties != make({}));
}

TEST(Properties, MovingTakesThePropertiesAndLeavesTheSourceEmpty) {
    Properties source(Untyped(std::make_shared<Tank>()), AllSchemas());
    Property& level = source["level"];
    Properties moved(std::move(source));
    EXPECT_EQ(&moved["level"], &level);
    EXPECT_FALSE(source);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(source.GetAll().empty());
    EXPECT_THROW(source["level"], std::out_of_range);
    EXPECT_FALSE(source == moved);
    EXPECT_FALSE(moved == source);
    Properties const other(std::move(source));
    EXPECT_TRUE(other == source);
    source = std::move(moved);
    EXPECT_EQ(&source["level"], &level);
    Properties& same = source;
    source = std::move(same);
    EXPECT_EQ(&source["level"], &level);
}

TEST(Properties, SwapExchangesEverything) {
    Properties left(Untyped(std::make_shared<Tank>()), {LevelSchema()});
    Properties right(nullptr, {ModeSchema()});
    property::swap(left, right);
    EXPECT_FALSE(left);
    EXPECT_TRUE(right);
    EXPECT_EQ(left.GetAll().size(), 1U);
    EXPECT_EQ(right["level"].GetName(), "level");
}

TEST(Properties, KeepsItsOwnerAlive) {
    auto tank = std::make_shared<Tank>();
    std::weak_ptr<Tank> const watch = tank;
    {
        Properties const properties(Untyped(tank), AllSchemas());
        tank.reset();
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_TRUE(watch.expired());
}

TEST(Properties, WithABinderTiesEachPropertyToTheNodeOfItsName) {
    auto const tank = std::make_shared<Tank>();
    auto const map = MakeMap();
    Binder binder(map);
    Properties const properties(binder, Untyped(tank), AllSchemas());
    EXPECT_TRUE(properties["level"].IsBound());
    EXPECT_TRUE(properties["mode"].IsBound());
    EXPECT_FALSE(properties["changes"].IsBound());
    EXPECT_EQ(tank->GetLevel(), 3.0);
    EXPECT_EQ(tank->GetMode(), "fast");
    map->Set("level", 5.0);
    EXPECT_EQ(properties["level"].Get<double>(), 5.0);
    properties["mode"].Set("slow");
    EXPECT_EQ(map->Find("mode")->GetPtr<configuration::node::DynamicEnum>()->Get(), "slow");
}

TEST(Properties, NeedsTheBinderOnlyWhileItIsMade) {
    auto const tank = std::make_shared<Tank>();
    auto const map = MakeMap();
    auto binder = std::make_unique<Binder>(map);
    Properties const properties(*binder, Untyped(tank), AllSchemas());
    binder.reset();
    map->Set("level", 5.0);
    EXPECT_EQ(tank->GetLevel(), 5.0);
}

TEST(Properties, RefusesANodeWithoutAValueAndLetsGoOfTheOwner) {
    auto const map = MakeMap();
    map->Insert(Map::Make("changes"));
    Binder binder(map);
    auto tank = std::make_shared<Tank>();
    EXPECT_THROW(Properties(binder, Untyped(tank), AllSchemas()), object::BadCast);
    EXPECT_EQ(tank.use_count(), 1);
    map->Set("level", 5.0);
    EXPECT_EQ(tank->GetLevel(), 3.0);
}

TEST(Properties, EndTheirTiesBeforeTheOwnerGoes) {
    auto const map = MakeMap();
    bool wasCalled = false;
    bool isGone = false;
    auto const schema = Schema({"level", "", 1.0}, [&](void*, object::Object const&) { wasCalled = true; });
    {
        Binder binder(map);
        std::shared_ptr<void> owner(new int, [&](int* number) {
            wasCalled = false;
            map->Set("level", 8.0);
            isGone = true;
            delete number;
        });
        Properties const properties(binder, std::move(owner), {schema});
        EXPECT_TRUE(wasCalled);
    }
    EXPECT_TRUE(isGone);
    EXPECT_FALSE(wasCalled);
}

TEST(PropertyBinder, RefusesANullMap) { EXPECT_THROW(Binder(nullptr), std::invalid_argument); }

TEST(PropertyBinder, FindsTheNodeOfAName) {
    auto const map = MakeMap();
    Binder const binder(map);
    EXPECT_EQ(binder.Find("level"), map->Find("level"));
    EXPECT_EQ(binder.Find("nothing"), nullptr);
    map->Insert(Map::Make("group"));
    EXPECT_THROW(binder.Find("group"), object::BadCast);
}

TEST(Properties, OwnerAndNodeAgreeAfterManyThreadsChangedBoth) {
    auto const tank = std::make_shared<Tank>();
    auto const map = MakeMap();
    Binder binder(map);
    Properties const properties(binder, Untyped(tank), AllSchemas());
    Property& level = properties["level"];
    constexpr int Rounds = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < Rounds; ++i) level.Set(static_cast<double>((i + t) % 8));
        });
        threads.emplace_back([&, t] {
            for (int i = 0; i < Rounds; ++i) map->Set("level", static_cast<double>((i + 3 * t) % 8));
        });
    }
    threads.emplace_back([&] {
        for (int i = 0; i < Rounds; ++i) EXPECT_LE(level.Get<double>(), 8.0);
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_FALSE(tank->WasCrowded());
    EXPECT_EQ(tank->GetLevel(), map->Find("level")->GetPtr<Primitive<double>>()->Get());
    EXPECT_EQ(tank->GetLevel(), level.Get<double>());
}

TEST(Properties, GoWhileOtherThreadsChangeTheNode) {
    auto const map = MakeMap();
    Binder binder(map);
    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        for (int i = 0; !isDone; ++i) map->Set("level", static_cast<double>(i % 8));
    });
    for (int i = 0; i < 200; ++i) Properties const properties(binder, Untyped(std::make_shared<Tank>()), AllSchemas());
    isDone = true;
    writer.join();
}

}  // namespace
}  // namespace qel::property
