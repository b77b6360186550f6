#include "qel/algorithm/video/properties.hpp"

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::algorithm::video {
namespace {

using configuration::node::Map;
using configuration::node::Primitive;
using hash::MurmurThree32;
using property::Binder;
using property::Schema;
using qel::test::MessageOf;

/// Pushes the algorithm away from the start of the object, so that a cast that forgets it goes wrong.
struct Ballast {
    virtual ~Ballast() = default;
    std::string weight = "heavy";
};

class Dimmer : public Ballast, public inplace::Algorithm {
public:
    Dimmer() : inplace::Algorithm(MurmurThree32("test.Dimmer"), {media::ColourFormat::Grey8}) {}

    void Process(media::video::FrameBase<void>& /*frame*/, Result& /*result*/) override {}
    double GetFactor() const { return factor_; }
    void SetFactor(double factor) { factor_ = factor; }

private:
    double factor_ = 1;
};

std::vector<Schema> Schemas() {
    return {property::MakeSchema<Dimmer, Algorithm>(&Dimmer::GetFactor, "factor", "how dark", 0.5,
                                                    configuration::Range{0.0, 1.0}, &Dimmer::SetFactor)};
}

Properties Make(std::shared_ptr<Algorithm> algorithm = std::make_shared<Dimmer>()) {
    return {std::move(algorithm), Schemas()};
}

/// Leaves properties moved-from.
void Empty(Properties& properties) { Properties const taken(std::move(properties)); }

TEST(VideoProperties, AreMovedAndNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<Properties>);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<Properties>);
    EXPECT_TRUE(std::is_nothrow_swappable_v<Properties>);
}

TEST(VideoProperties, ReachTheAlgorithmAndItsPropertiesByName) {
    auto const dimmer = std::make_shared<Dimmer>();
    Properties properties = Make(dimmer);
    Properties const& constant = properties;
    EXPECT_TRUE(properties);
    EXPECT_EQ(&properties.GetAlgorithm(), dimmer.get());
    EXPECT_EQ(&constant.GetAlgorithm(), dimmer.get());
    EXPECT_EQ(constant.GetAlgorithmPtr(), dimmer);
    properties.GetProperty("factor").Set(0.25);
    EXPECT_EQ(dimmer->GetFactor(), 0.25);
    EXPECT_EQ(constant.GetProperty("factor").Get<double>(), 0.25);
    EXPECT_EQ(&constant.GetProperty("factor"), &properties.GetProperties()["factor"]);
    EXPECT_EQ(&constant.GetProperties(), &properties.GetProperties());
    EXPECT_THROW(properties.GetProperty("fact"), std::out_of_range);
    EXPECT_THROW(constant.GetProperty("fact"), std::out_of_range);
}

TEST(VideoProperties, ShareTheAlgorithm) {
    auto dimmer = std::make_shared<Dimmer>();
    std::weak_ptr<Dimmer> const watch = dimmer;
    {
        Properties const properties = Make(dimmer);
        EXPECT_GE(dimmer.use_count(), 2);
        dimmer.reset();
        EXPECT_FALSE(watch.expired());
        EXPECT_NE(properties.GetAlgorithmPtr(), nullptr);
    }
    EXPECT_TRUE(watch.expired());
}

TEST(VideoProperties, LeaveTheAlgorithmToItsOtherOwners) {
    auto const dimmer = std::make_shared<Dimmer>();
    { Properties const properties = Make(dimmer); }
    EXPECT_EQ(dimmer.use_count(), 1);
}

TEST(VideoProperties, ReleaseThePropertiesBeforeTheAlgorithm) {
    struct Token {
        std::vector<std::string>* order;
        ~Token() { order->emplace_back("properties"); }
    };
    std::vector<std::string> order;
    std::shared_ptr<Algorithm> algorithm(new Dimmer, [&order](Algorithm* dimmer) {
        order.emplace_back("algorithm");
        delete dimmer;
    });
    std::vector<Schema> schemas;
    schemas.push_back(Schema({"factor", "", 0.5}, [token = std::make_shared<Token>(Token{&order})](
                                                      void*, object::Object const&) { EXPECT_TRUE(token); }));
    order.clear();
    { Properties const properties(std::move(algorithm), std::move(schemas)); }
    EXPECT_EQ(order, (std::vector<std::string>{"properties", "algorithm"}));
}

TEST(VideoProperties, WithABinderFollowAndTellTheConfiguration) {
    auto const dimmer = std::make_shared<Dimmer>();
    auto const map = Map::Make("settings");
    map->Schema({{"factor", "", 0.75}});
    auto binder = std::make_unique<Binder>(map);
    Properties const properties(dimmer, *binder, Schemas());
    binder.reset();
    EXPECT_EQ(dimmer->GetFactor(), 0.75);
    map->Set("factor", 0.5);
    EXPECT_EQ(dimmer->GetFactor(), 0.5);
    properties.GetProperty("factor").Set(0.125);
    EXPECT_EQ(map->Find("factor")->GetPtr<Primitive<double>>()->Get(), 0.125);
}

TEST(VideoProperties, TakeTheListThatARegistryEntryGives) {
    std::vector<configuration::Property> const list = {
        registry::MakeProperty<Dimmer>("factor", "how dark", 0.5, configuration::Range{0.0, 1.0}, &Dimmer::SetFactor)};
    auto const dimmer = std::make_shared<Dimmer>();
    Properties const properties(dimmer, std::vector<Schema>(list.begin(), list.end()));
    properties.GetProperty("factor").Set(0.25);
    EXPECT_EQ(dimmer->GetFactor(), 0.25);
}

TEST(VideoProperties, OverANullAlgorithmAreFalse) {
    Properties properties = Make(nullptr);
    Properties const& constant = properties;
    constexpr char const* Text = "Could not dereference null Algorithm pointer";
    EXPECT_FALSE(properties);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { properties.GetAlgorithm(); }), Text);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { constant.GetAlgorithm(); }), Text);
    EXPECT_EQ(constant.GetAlgorithmPtr(), nullptr);
    EXPECT_EQ(properties.GetProperty("factor").GetName(), "factor");
    EXPECT_TRUE(properties == Make(nullptr));
    EXPECT_FALSE(properties == Make());
}

TEST(VideoProperties, MovedFromAnswerTheCheapQueriesAndThrowOtherwise) {
    Properties properties = Make();
    Empty(properties);
    Properties const& constant = properties;
    EXPECT_FALSE(properties);
    EXPECT_EQ(constant.GetAlgorithmPtr(), nullptr);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { properties.GetAlgorithm(); }), "Pimpl is null");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { constant.GetAlgorithm(); }), "Pimpl is null");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { properties.GetProperties(); }), "Pimpl is null");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { constant.GetProperties(); }), "Pimpl is null");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { constant.GetProperty("factor"); }), "Pimpl is null");
    Properties other = Make();
    Empty(other);
    EXPECT_TRUE(properties == other);
    EXPECT_FALSE(properties != other);
    EXPECT_FALSE(properties == Make());
    EXPECT_FALSE(Make() == properties);
    properties = Make();
    EXPECT_TRUE(properties);
}

TEST(VideoProperties, AreEqualOverTheSameAlgorithmAndEqualPropertySets) {
    auto const dimmer = std::make_shared<Dimmer>();
    auto const equal = std::make_shared<Dimmer>();
    ASSERT_TRUE(*dimmer == *equal);
    Properties const properties = Make(dimmer);
    EXPECT_TRUE(properties == properties);
    EXPECT_TRUE(properties == Make(dimmer));
    EXPECT_FALSE(properties != Make(dimmer));
    EXPECT_TRUE(properties.GetProperties() == Make(equal).GetProperties());
    EXPECT_FALSE(properties == Make(equal));
    EXPECT_TRUE(properties != Make(equal));
    EXPECT_FALSE(properties == Properties(dimmer, {}));
}

TEST(VideoProperties, MovingAndAssigningTakeEverything) {
    auto const dimmer = std::make_shared<Dimmer>();
    auto former = std::make_shared<Dimmer>();
    std::weak_ptr<Dimmer> const watch = former;
    Properties target = Make(std::move(former));
    Properties source = Make(dimmer);
    target = std::move(source);
    EXPECT_TRUE(watch.expired());
    EXPECT_FALSE(source);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(target.GetAlgorithmPtr(), dimmer);
    Properties& same = target;
    target = std::move(same);
    EXPECT_TRUE(target);
    EXPECT_EQ(target.GetAlgorithmPtr(), dimmer);
    EXPECT_EQ(target.GetProperty("factor").GetName(), "factor");
}

TEST(VideoProperties, SwapExchangesEverything) {
    auto const dimmer = std::make_shared<Dimmer>();
    Properties left = Make(dimmer);
    Properties right = Make(nullptr);
    video::swap(left, right);
    EXPECT_FALSE(left);
    EXPECT_EQ(right.GetAlgorithmPtr(), dimmer);
}

TEST(VideoProperties, ReleaseTheAlgorithmWhenThePropertySetCannotBeMade) {
    auto const dimmer = std::make_shared<Dimmer>();
    std::vector<Schema> twice = Schemas();
    twice.push_back(twice.front());
    EXPECT_THROW(Properties(dimmer, twice), std::invalid_argument);
    auto const map = Map::Make("settings");
    map->Insert(Map::Make("factor"));
    Binder binder(map);
    EXPECT_THROW(Properties(dimmer, binder, Schemas()), object::BadCast);
    EXPECT_EQ(dimmer.use_count(), 1);
}

}  // namespace
}  // namespace qel::algorithm::video
