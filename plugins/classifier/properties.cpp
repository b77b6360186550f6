#include <string>

#include "classifier.hpp"
#include "qel/algorithm/video/registry/property.hpp"

namespace qel::classifier {
namespace {

using algorithm::video::registry::MakeProperty;
using configuration::Property;
using configuration::Range;
using plugin::MakeSetting;

}  // namespace

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        MakeProperty<Classifier>("model", "The name of the model: its folder below the model root",
                                 std::string(DefaultModel),
                                 [](Classifier& classifier, std::string const& name) {
                                     classifier.ChangeSettings([&](Settings& settings) { settings.model = name; });
                                 }),
        MakeSetting<Classifier>("minimum_confidence",
                                "How sure the network must be, at least, for an object to get a new label",
                                Range{0.0, 1.0}, &Settings::minimumConfidence),
        MakeSetting<Classifier>("margin",
                                "How much of what is around an object is shown to the network, as a share of its box",
                                Range{0.0, 1.0}, &Settings::margin),
    };
    return properties;
}

}  // namespace qel::classifier
