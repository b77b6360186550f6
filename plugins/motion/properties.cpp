#include <string>
#include <utility>

#include "motion.hpp"
#include "qel/algorithm/video/registry/property.hpp"

namespace qel::motion {
namespace {

using configuration::Property;
using configuration::Range;

/// A property that is one field of the model's parameters, or one of the settings beside them.
template <class T>
Property Make(std::string name, std::string description, Range<T> range, T Parameters::*field) {
    return algorithm::video::registry::MakeProperty<Motion>(
        std::move(name), std::move(description), Parameters().*field, range, [field](Motion& motion, T value) {
            motion.ChangeSettings([&](Settings& settings) { settings.model.*field = value; });
        });
}

template <class T>
Property Make(std::string name, std::string description, Range<T> range, T Settings::*field) {
    return plugin::MakeSetting<Motion>(std::move(name), std::move(description), range, field);
}

}  // namespace

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        Make("threshold", "How many times its usual spread a pixel may be off its background; further off moves",
             Range{2.0, 15.0}, &Parameters::threshold),
        Make("noise",
             "Smallest spread of a pixel that is believed, in grey levels: raise it for a noisy or badly "
             "compressed picture",
             Range{0.5, 8.0}, &Parameters::noise),
        Make("colour_weight", "What a level of colour difference counts in levels of brightness; 0 ignores colour",
             Range{0.0, 3.9}, &Parameters::colourWeight),
        Make("shadow_depth",
             "The darkest shadow, as its brightness over that of the background: what is darker moves; 1 takes no "
             "shadow into account",
             Range{0.0, 1.0}, &Parameters::shadowDepth),
        Make("shadow_colour", "How much a shadow may change the colour, in levels", Range{0.0, 31.0},
             &Parameters::shadowColour),
        Make("learning_frames", "Frames in which the background follows slow change", Range{1, 8192},
             &Parameters::learningFrames),
        Make("absorb_frames", "Frames after which what has stopped becomes background", Range{64, 32000},
             &Parameters::absorbFrames),
        Make("global_change",
             "Share of moving pixels above which the whole picture is taken for changed, as when a light is switched, "
             "and learned anew; 1 never",
             Range{0.1, 1.0}, &Parameters::globalChange),
        Make("opening", "3 x 3 openings of the mask: they take specks away and part what touches lightly",
             Range<std::uint32_t>{0, 8}, &Settings::opening),
        Make("closing", "3 x 3 closings of the mask: they fill gaps and join what is close", Range<std::uint32_t>{0, 8},
             &Settings::closing),
        Make("minimum_area", "Smallest object that is reported, in pixels", Range<std::uint32_t>{1, 100000000},
             &Settings::minimumArea),
    };
    return properties;
}

}  // namespace qel::motion
