// The plug-in as a host meets it: loaded, registered, configured, bound.

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "moving_box.hpp"
#include "plugins/plugin_test_base.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::motion {
namespace {

namespace video = algorithm::video;

/// A configured, bound instance.
class MotionPlugin : public test::PluginTest<video::passthrough::Algorithm> {
protected:
    MotionPlugin() : PluginTest("qel.algorithm.video.Motion") { bindings_ = algorithm_->BindToConfiguration(*map_); }

    std::size_t Count(media::video::FrameBase<void const> const& frame) {
        video::Result result;
        algorithm_->Process(frame, result);
        return result.objects.size();
    }

    std::vector<type::Binding> bindings_;
    MovingBox film_;
};

TEST_F(MotionPlugin, RegistersItsAlgorithmAndMakesANodeForEachProperty) {
    ASSERT_NE(algorithm_, nullptr);
    EXPECT_EQ(algorithm_->GetTypeNameId(), hash::MurmurThree32("qel.algorithm.video.Motion"));
    std::vector<std::string> const names = GetPropertyNames();
    EXPECT_EQ(names, (std::vector<std::string>{"threshold", "noise", "colour_weight", "shadow_depth", "shadow_colour",
                                               "learning_frames", "absorb_frames", "global_change", "opening",
                                               "closing", "minimum_area"}));
    EXPECT_EQ(bindings_.size(), names.size());
    for (type::Binding const& binding : bindings_) EXPECT_TRUE(binding);
}

TEST_F(MotionPlugin, FollowsItsNodesFromTheNextFrameOn) {
    for (int i = 0; i < 30; ++i) Count(film_.Empty());
    EXPECT_EQ(Count(film_.Show(20, 10, 10, 10)), 0U) << "the default wants 400 pixels";
    map_->Set("minimum_area", std::uint32_t{100});
    EXPECT_EQ(Count(film_.Show(50, 10, 10, 10)), 1U);
    map_->Set("minimum_area", std::uint32_t{101});
    EXPECT_EQ(Count(film_.Show(70, 10, 10, 10)), 0U);
    bindings_.clear();
    map_->Set("minimum_area", std::uint32_t{1});
    EXPECT_EQ(Count(film_.Show(20, 40, 10, 10)), 0U) << "no longer bound";
}

TEST_F(MotionPlugin, RefusesValuesOutOfRange) {
    EXPECT_THROW(map_->Set("threshold", 1.99), std::out_of_range);
    EXPECT_THROW(map_->Set("minimum_area", std::uint32_t{0}), std::out_of_range);
    EXPECT_NO_THROW(map_->Set("threshold", 2.0));
}

}  // namespace
}  // namespace qel::motion
