#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "privacy_mask.hpp"
#include "qel/configuration/node/map.hpp"

namespace qel::privacy_mask {
namespace {

TEST(Properties, EachReachItsOwnSetting) {
    struct Case {
        char const* name;
        char const* value;
        void (*check)(Settings const& settings);
    };
    Case const cases[] = {
        {"zones", "1,2 3,4 5,7; 0%,0% 1%,0% 1%,1%", [](Settings const& s) { EXPECT_EQ(s.zones->size(), 2U); }},
        {"mode", "blank", [](Settings const& s) { EXPECT_EQ(s.mode, Mode::Blank); }},
        {"block_size", "77", [](Settings const& s) { EXPECT_EQ(s.blockSize, 77U); }},
        {"mask_motion", "shapes", [](Settings const& s) { EXPECT_EQ(s.movingPart, MovingPart::Shapes); }},
        {"motion_margin", "3", [](Settings const& s) { EXPECT_EQ(s.movingMargin, 3U); }},
        {"mode", "pixelate", [](Settings const& s) { EXPECT_EQ(s.mode, Mode::Pixelate); }},
        {"mask_motion", "boxes", [](Settings const& s) { EXPECT_EQ(s.movingPart, MovingPart::Boxes); }},
        {"mask_motion", "off", [](Settings const& s) { EXPECT_EQ(s.movingPart, MovingPart::None); }},
        {"zones", "", [](Settings const& s) { EXPECT_TRUE(s.zones->empty()); }},
    };
    PrivacyMask mask;
    auto const map = configuration::node::Map::Make("privacy_mask");
    for (configuration::Property const& property : Properties()) map->Schema(property.schemas);
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        map->Set(c.name, std::string(c.value));
        for (configuration::Property const& property : Properties()) {
            if (property.name == c.name) {
                property.setter(static_cast<algorithm::video::Algorithm*>(&mask), *map->Find(c.name));
            }
        }
        c.check(mask.GetSettings());
    }
}

TEST(Properties, HaveTheDefaultsOfTheSettings) {
    Settings const defaults;
    PrivacyMask mask;
    mask.ChangeSettings([](Settings& settings) {
        settings = {std::make_shared<Zones const>(ParseZones("0,0 9,0 9,9")), Mode::Blank, 99, MovingPart::Boxes, 33};
    });
    for (configuration::Property const& property : Properties()) {
        auto const map = configuration::node::Map::Make("privacy_mask");
        map->Schema(property.schemas);
        property.setter(static_cast<algorithm::video::Algorithm*>(&mask), *map->Find(property.name));
    }
    Settings const settings = mask.GetSettings();
    EXPECT_TRUE(settings.zones->empty());
    EXPECT_EQ(settings.mode, defaults.mode);
    EXPECT_EQ(settings.blockSize, defaults.blockSize);
    EXPECT_EQ(settings.movingPart, defaults.movingPart);
    EXPECT_EQ(settings.movingMargin, defaults.movingMargin);
}

}  // namespace
}  // namespace qel::privacy_mask
