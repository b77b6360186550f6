#include <memory>
#include <set>
#include <string>
#include <utility>

#include "privacy_mask.hpp"
#include "qel/algorithm/video/registry/property.hpp"

namespace qel::privacy_mask {
namespace {

using algorithm::video::registry::MakeProperty;
using configuration::Property;
using configuration::Range;
using plugin::MakeSetting;

/// Zones that cannot be read leave the settings, and so the mask, as they are.
void SetZones(PrivacyMask& mask, std::string const& text) {
    auto zones = std::make_shared<Zones const>(ParseZones(text));
    mask.ChangeSettings([&](Settings& settings) { settings.zones = std::move(zones); });
}

void SetMode(PrivacyMask& mask, std::string const& text) {
    mask.ChangeSettings([&](Settings& settings) { settings.mode = text == "blank" ? Mode::Blank : Mode::Pixelate; });
}

void SetMaskMotion(PrivacyMask& mask, std::string const& text) {
    MovingPart const part = text == "shapes"  ? MovingPart::Shapes
                            : text == "boxes" ? MovingPart::Boxes
                                              : MovingPart::None;
    mask.ChangeSettings([&](Settings& settings) { settings.movingPart = part; });
}

}  // namespace

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        MakeProperty<PrivacyMask>("zones",
                                  "The zones that are hidden: corners x,y in pixels, or each number with a percent "
                                  "sign of the frame's size, in "
                                  "their order round the zone, separated by blanks; a semicolon between zones",
                                  std::string(), SetZones),
        MakeProperty<PrivacyMask>("mode", "How pixels are hidden: by the mean of their block, or black",
                                  std::string("pixelate"), std::set<std::string>{"blank", "pixelate"}, SetMode),
        MakeSetting<PrivacyMask>("block_size",
                                 "Width and height of the blocks, in pixels; an odd number counts as the next even one",
                                 Range<std::uint32_t>{4, Painter::LargestBlock}, &Settings::blockSize),
        MakeProperty<PrivacyMask>("mask_motion",
                                  "Hides what moves as well, as found by the algorithms that run before: its shapes, "
                                  "the boxes of all objects, "
                                  "or off",
                                  std::string("off"), std::set<std::string>{"boxes", "off", "shapes"}, SetMaskMotion),
        MakeSetting<PrivacyMask>("motion_margin", "How many pixels the shapes or boxes are made larger on each side",
                                 Range<std::uint32_t>{0, 64}, &Settings::movingMargin),
    };
    return properties;
}

}  // namespace qel::privacy_mask
