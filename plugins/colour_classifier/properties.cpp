#include <string>
#include <utility>

#include "colour_classifier.hpp"

namespace qel::colour_classifier {
namespace {

using configuration::Property;
using configuration::Range;

template <class T>
Property Make(std::string name, std::string description, Range<T> range, T Settings::*field) {
    return plugin::MakeSetting<ColourClassifier>(std::move(name), std::move(description), range, field);
}

}  // namespace

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        Make("most_colours", "How many colours of an object are named at most", Range<std::uint32_t>{1, 11},
             &Settings::mostColours),
        Make("smallest_share", "Smallest share of an object's pixels that makes a further colour worth naming",
             Range{0.0, 1.0}, &Settings::smallestShare),
        Make("smallest_shade_share",
             "The same for black, white and grey, which people notice less, and which what lies behind often is",
             Range{0.0, 1.0}, &Settings::smallestShadeShare),
        Make("rim",
             "How many pixels are left out along an object's edge, where it mixes with what is behind it; fewer where "
             "too little would be left",
             Range<std::uint32_t>{0, 16}, &Settings::rim),
        Make("neutral_chroma",
             "Smallest chroma of a colour, in OKLab: what has less is black, grey or white; raise it where the light "
             "tints everything",
             Range{0.0, 0.2}, &Settings::neutralChroma),
        Make("exposure",
             "By how many stops the picture is brightened (or darkened, below 0) before colours are named: raise it "
             "for the night",
             Range{-4.0, 4.0}, &Settings::exposure),
    };
    return properties;
}

}  // namespace qel::colour_classifier
