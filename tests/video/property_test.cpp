#include "qel/algorithm/video/registry/property.hpp"

#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::algorithm::video::registry {
namespace {

using configuration::Property;
using configuration::Range;
using configuration::node::Map;
using configuration::node::Primitive;
using hash::MurmurThree32;
using inference::backend::Manager;

/// Pushes the algorithm away from the start of the object, so that a cast that forgets it goes wrong.
struct Ballast {
    virtual ~Ballast() = default;
    std::string weight = "heavy";
};

class Tuned : public Ballast, public passthrough::Algorithm {
public:
    static constexpr char const* TypeName = "test.Tuned";

    Tuned() : passthrough::Algorithm(MurmurThree32(TypeName), {}) {}

    void Process(media::video::FrameBase<void const> const& /*frame*/, Result& /*result*/) override {}
    void SetThreshold(double value) { threshold = value; }
    void SetCount(unsigned char value) { count = value; }
    void SetMode(std::string const& value) { mode = value; }

    double threshold = 0;
    unsigned char count = 0;
    std::string mode;
};

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        MakeProperty<Tuned>("threshold", "how far", 2.5, Range{1.0, 10.0}, &Tuned::SetThreshold),
        MakeProperty<Tuned>("count", "how many", static_cast<unsigned char>(3), &Tuned::SetCount),
        MakeProperty<Tuned>("mode", "which way", std::string("slow"), std::set<std::string>{"fast", "slow"},
                            &Tuned::SetMode),
    };
    return properties;
}

std::shared_ptr<Map> MakeNodes() {
    Manager manager;
    auto map = Map::Make("settings");
    CreateNodes(Properties)(manager, map);
    return map;
}

TEST(RegistryProperty, CreateNodesMakesANodeForEachPropertyInTheirOrder) {
    auto const map = MakeNodes();
    auto const children = map->GetChildren();
    ASSERT_EQ(children.size(), 3U);
    EXPECT_EQ(children[0]->GetName(), "threshold");
    EXPECT_EQ(children[0]->GetDescription(), "how far");
    EXPECT_EQ(children[0]->GetPtr<Primitive<double>>()->Get(), 2.5);
    EXPECT_THROW(children[0]->GetPtr<Primitive<double>>()->Set(10.5), std::out_of_range);
    EXPECT_EQ(children[1]->GetPtr<Primitive<unsigned char>>()->Get(), 3);
    EXPECT_EQ(children[2]->GetPtr<configuration::node::DynamicEnum>()->Get(), "slow");
}

TEST(RegistryProperty, CreateNodesRefusesANodeThatIsNoMap) {
    Manager manager;
    EXPECT_THROW(CreateNodes(Properties)(manager, Primitive<double>::Make("x", "", 1.0)), object::BadCast);
    EXPECT_THROW(CreateNodes(Properties)(manager, nullptr), object::BadCast);
}

TEST(RegistryProperty, ReachesTheConcreteAlgorithmThroughItsBase) {
    static bool const registered = Register({MurmurThree32(Tuned::TypeName), Tuned::TypeName, {}, Properties, {}});
    EXPECT_TRUE(registered);
    auto const map = MakeNodes();
    Tuned tuned;
    auto const bindings = tuned.BindToConfiguration(*map);
    ASSERT_EQ(bindings.size(), 3U);
    EXPECT_EQ(tuned.threshold, 2.5);
    EXPECT_EQ(tuned.count, 3);
    EXPECT_EQ(tuned.mode, "slow");
    map->Set("threshold", 7.25);
    map->Set("count", "255");
    map->Set("mode", "fast");
    EXPECT_EQ(tuned.threshold, 7.25);
    EXPECT_EQ(tuned.count, 255);
    EXPECT_EQ(tuned.mode, "fast");
    EXPECT_EQ(tuned.weight, "heavy");
}

}  // namespace
}  // namespace qel::algorithm::video::registry
