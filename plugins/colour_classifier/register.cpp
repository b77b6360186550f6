#include "qel/algorithm/video/registry/register.hpp"

#include <memory>

#include "colour_classifier.hpp"
#include "qel/algorithm/info/colour_classifier.hpp"
#include "qel/algorithm/video/registry/publish.hpp"

namespace qel::colour_classifier {
namespace {

namespace registry = algorithm::video::registry;
namespace model = inference::model;

/// It needs no model, so nothing is left to load.
std::shared_ptr<algorithm::info::Base> Describe(configuration::Node& root) {
    algorithm::info::ColourClassifier::Colours colours;
    for (NamedColour const& colour : BasicColours) colours.emplace(colour.name, colour.rgb);
    return std::make_shared<algorithm::info::ColourClassifier>(
        root, "colour_classifier", "Colours", std::move(colours),
        model::State(model::LoadingStatus::Loaded, model::BuildingStatus::Ended), QEL_VERSION);
}

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered =
    registry::Register({hash::MurmurThree32(TypeName), TypeName,
                        [](inference::backend::Manager&) { return std::make_shared<ColourClassifier>(); }, Properties,
                        registry::CreateNodes(Properties, Describe)});

}  // namespace
}  // namespace qel::colour_classifier
