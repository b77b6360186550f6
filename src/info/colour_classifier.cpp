#include "qel/algorithm/info/colour_classifier.hpp"

#include <stdexcept>
#include <utility>

#include "qel/configuration/node/primitive.hpp"

namespace qel::algorithm::info {

using configuration::node::Freeze;
using configuration::node::Map;
using configuration::node::Options;
using Component = configuration::node::Primitive<unsigned char>;

namespace {

void CheckNotEmpty(ColourClassifier::Colours const& colours) {
    if (colours.empty()) {
        throw std::invalid_argument("No colours passed to qel::algorithm::info::ColourClassifier");
    }
}

std::shared_ptr<Map> MakeColour(std::string const& name, media::colour::Rgb colour, Options flags) {
    auto const map = Map::Make(name, "", flags);
    map->Insert(Component::Make("r", "The red component", colour.red, flags));
    map->Insert(Component::Make("g", "The green component", colour.green, flags));
    map->Insert(Component::Make("b", "The blue component", colour.blue, flags));
    return map;
}

}  // namespace

ColourClassifier::ColourClassifier(configuration::Node& root, std::string_view name, std::string_view friendlyName,
                                   Colours colours, inference::model::State state, std::string_view version)
    : Base(root, name, friendlyName, state, version), colours_(std::move(colours)) {
    CheckNotEmpty(colours_);
}

ColourClassifier::ColourClassifier(configuration::Node& root, std::string_view name, std::string_view friendlyName,
                                   std::vector<std::string> modelNames, Colours colours)
    : Base(root, name, friendlyName, std::move(modelNames)), colours_(std::move(colours)) {
    CheckNotEmpty(colours_);
}

ColourClassifier::~ColourClassifier() = default;

std::vector<configuration::Schema> ColourClassifier::GetSchemas() const { return Base::GetSchemas(); }

void ColourClassifier::Set(Map& map) const {
    Base::Set(map);
    auto const colours = Map::Make(ColoursNode, "The colours supported by this algorithm", GetFlags());
    for (auto const& [name, colour] : colours_) colours->Insert(MakeColour(name, colour, GetFlags()));
    colours->Freeze(Freeze::Frozen);
    map.Insert(colours);
}

Type ColourClassifier::GetAlgorithmType() const { return Type::ColourClassifier; }

}  // namespace qel::algorithm::info
