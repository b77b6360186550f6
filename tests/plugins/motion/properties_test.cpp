#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "motion.hpp"
#include "qel/configuration/node/map.hpp"

namespace qel::motion {
namespace {

TEST(Properties, EachReachItsOwnSetting) {
    struct Case {
        char const* name;
        double value;
        void (*check)(Settings const& settings, double value);
    };
    Case const cases[] = {
        {"threshold", 7.5, [](Settings const& s, double v) { EXPECT_EQ(s.model.threshold, v); }},
        {"noise", 4.5, [](Settings const& s, double v) { EXPECT_EQ(s.model.noise, v); }},
        {"colour_weight", 1.5, [](Settings const& s, double v) { EXPECT_EQ(s.model.colourWeight, v); }},
        {"shadow_depth", 0.25, [](Settings const& s, double v) { EXPECT_EQ(s.model.shadowDepth, v); }},
        {"shadow_colour", 12.5, [](Settings const& s, double v) { EXPECT_EQ(s.model.shadowColour, v); }},
        {"learning_frames", 17, [](Settings const& s, double v) { EXPECT_EQ(s.model.learningFrames, v); }},
        {"absorb_frames", 99, [](Settings const& s, double v) { EXPECT_EQ(s.model.absorbFrames, v); }},
        {"global_change", 0.75, [](Settings const& s, double v) { EXPECT_EQ(s.model.globalChange, v); }},
        {"opening", 3, [](Settings const& s, double v) { EXPECT_EQ(s.opening, v); }},
        {"closing", 2, [](Settings const& s, double v) { EXPECT_EQ(s.closing, v); }},
        {"minimum_area", 123, [](Settings const& s, double v) { EXPECT_EQ(s.minimumArea, v); }},
    };
    Motion motion;
    std::size_t index = 0;
    for (configuration::Property const& property : Properties()) {
        ASSERT_LT(index, std::size(cases));
        Case const& c = cases[index++];
        SCOPED_TRACE(c.name);
        ASSERT_EQ(property.name, c.name);
        auto const map = configuration::node::Map::Make("motion");
        map->Schema(property.schemas);
        std::string const text = std::to_string(c.value);
        map->Set(c.name, text.substr(0, text.find(".000000")));
        property.setter(static_cast<algorithm::video::Algorithm*>(&motion), *map->Find(c.name));
        c.check(motion.GetSettings(), c.value);
    }
    EXPECT_EQ(index, std::size(cases));
}

}  // namespace
}  // namespace qel::motion
