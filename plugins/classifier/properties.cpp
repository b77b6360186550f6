#include <string>
#include <utility>

#include "classifier.hpp"
#include "qel/algorithm/video/registry/property.hpp"

namespace qel::classifier {
namespace {

using algorithm::video::registry::MakeProperty;
using configuration::Property;
using configuration::Range;

Property MakeNumber(std::string name, std::string description, Range<double> range, double Settings::*field) {
    return MakeProperty<Classifier>(std::move(name), std::move(description), Settings().*field, range,
                                    [field](Classifier& classifier, double value) {
                                        classifier.ChangeSettings([&](Settings& settings) { settings.*field = value; });
                                    });
}

}  // namespace

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        MakeProperty<Classifier>("model", "The name of the model: its folder below the model root",
                                 std::string(DefaultModel),
                                 [](Classifier& classifier, std::string const& name) {
                                     classifier.ChangeSettings([&](Settings& settings) { settings.model = name; });
                                 }),
        MakeNumber("minimum_confidence", "How sure the network must be, at least, for an object to get a new label",
                   {0.0, 1.0}, &Settings::minimumConfidence),
        MakeNumber("margin", "How much of what is around an object is shown to the network, as a share of its box",
                   {0.0, 1.0}, &Settings::margin),
    };
    return properties;
}

}  // namespace qel::classifier
