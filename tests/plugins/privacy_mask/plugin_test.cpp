// The plug-in as a host meets it: loaded, registered, configured, bound.

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugins/plugin_test_base.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/properties.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::privacy_mask {
namespace {

namespace video = algorithm::video;

/// A configured instance.
class PrivacyMaskPlugin : public test::PluginTest<video::inplace::Algorithm> {
protected:
    PrivacyMaskPlugin() : PluginTest("qel.algorithm.video.PrivacyMask") {}

    /// The columns of row 0 of a white frame, 32 pixels wide, that are black afterwards.
    std::string Hidden() {
        media::video::FrameBase<void> frame(media::ColourFormat::Grey8, 32, 8, {}, {});
        auto* const pixels = static_cast<std::uint8_t*>(frame.GetPlane(0).GetBuffer());
        std::fill_n(pixels, frame.GetPlane(0).GetSize(), std::uint8_t{255});
        video::Result result;
        algorithm_->Process(frame, result);
        std::string row;
        for (int x = 0; x < 12; ++x) row += pixels[x] == 0 ? '#' : '.';
        return row;
    }
};

constexpr char BadZones[] = "0,0 3,0 3,3 0,x";
constexpr char BadZonesMessage[] = "Cannot use the zones: zone 1, corner 4, character 15: expected a number, found 'x'";

TEST_F(PrivacyMaskPlugin, RegistersItsAlgorithmAndMakesANodeForEachProperty) {
    ASSERT_NE(algorithm_, nullptr);
    EXPECT_EQ(algorithm_->GetTypeNameId(), hash::MurmurThree32("qel.algorithm.video.PrivacyMask"));
    std::vector<std::string> const names = GetPropertyNames();
    EXPECT_EQ(names, (std::vector<std::string>{"zones", "mode", "block_size", "mask_motion", "motion_margin"}));
    auto const bindings = algorithm_->BindToConfiguration(*map_);
    EXPECT_EQ(bindings.size(), names.size());
    for (type::Binding const& binding : bindings) EXPECT_TRUE(binding);
}

TEST_F(PrivacyMaskPlugin, FollowsItsNodesFromTheNextFrameOn) {
    auto bindings = algorithm_->BindToConfiguration(*map_);
    map_->Set("mode", std::string("blank"));
    EXPECT_EQ(Hidden(), "............");
    map_->Set("zones", std::string("2,0 4,0 4,3 2,3"));
    EXPECT_EQ(Hidden(), "..###.......");
    map_->Set("zones", std::string("2,0 4,0 4,3 2,3; 8,0 9,0 9,3 8,3"));
    EXPECT_EQ(Hidden(), "..###...##..");
    map_->Set("zones", std::string());
    EXPECT_EQ(Hidden(), "............");
    bindings.clear();
    map_->Set("zones", std::string("2,0 4,0 4,3 2,3"));
    EXPECT_EQ(Hidden(), "............") << "no longer bound";
}

TEST_F(PrivacyMaskPlugin, KeepsTheMaskWhenZonesCannotBeReadAndTellsWhoeverSetTheNode) {
    auto const bindings = algorithm_->BindToConfiguration(*map_);
    map_->Set("mode", std::string("blank"));
    map_->Set("zones", std::string("2,0 4,0 4,3 2,3"));
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { map_->Set("zones", std::string(BadZones)); }),
              BadZonesMessage);
    EXPECT_EQ(Hidden(), "..###.......");
    map_->Set("zones", std::string("3,0 5,0 5,3 3,3"));
    EXPECT_EQ(Hidden(), "...###......");
}

TEST_F(PrivacyMaskPlugin, KeepsTheMaskWhenZonesCannotBeReadAndTellsWhoeverSetTheProperty) {
    property::Binder binder(map_);
    video::Properties const properties(algorithm_, binder, schemas_);
    properties.GetProperty("mode").Set("blank");
    properties.GetProperty("zones").Set("2,0 4,0 4,3 2,3");
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { properties.GetProperty("zones").Set(BadZones); }),
              BadZonesMessage);
    EXPECT_EQ(Hidden(), "..###.......");
    EXPECT_EQ(properties.GetProperty("zones").Get<std::string>(), "2,0 4,0 4,3 2,3");
    EXPECT_EQ(map_->Find("zones")->As<configuration::node::Primitive<std::string>>().Get(), "2,0 4,0 4,3 2,3")
        << "the node as well";
}

TEST_F(PrivacyMaskPlugin, RefusesToStartWithZonesThatCannotBeRead) {
    map_->Set("zones", std::string(BadZones));
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { (void)algorithm_->BindToConfiguration(*map_); }),
              BadZonesMessage);
}

TEST_F(PrivacyMaskPlugin, RefusesValuesOutOfRange) {
    EXPECT_THROW(map_->Set("block_size", std::uint32_t{3}), std::out_of_range);
    EXPECT_THROW(map_->Set("block_size", std::uint32_t{129}), std::out_of_range);
    EXPECT_THROW(map_->Set("motion_margin", std::uint32_t{65}), std::out_of_range);
    EXPECT_ANY_THROW(map_->Set("mode", std::string("blur")));
    EXPECT_ANY_THROW(map_->Set("mask_motion", std::string("people")));
}

}  // namespace
}  // namespace qel::privacy_mask
