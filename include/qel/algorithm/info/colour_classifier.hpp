#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qel/algorithm/info/base.hpp"
#include "qel/media/colour/rgb.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that names colours; the names and what they stand for are the map "colours". Any thread.
class QEL_ALGORITHM_EXPORT ColourClassifier : public Base {
public:
    using Colours = std::map<std::string, media::colour::Rgb>;

    /// Both throw std::invalid_argument when there is no colour.
    ColourClassifier(configuration::Node& root, std::string_view name, std::string_view friendlyName, Colours colours,
                     inference::model::State state, std::string_view version);
    ColourClassifier(configuration::Node& root, std::string_view name, std::string_view friendlyName,
                     std::vector<std::string> modelNames, Colours colours);
    ~ColourClassifier() override;

    /// Those of Base: the nodes of the colours carry their own descriptions.
    std::vector<configuration::Schema> GetSchemas() const override;
    /// Inserts "colours", frozen, with a map "r", "g", "b" for each colour, in ascending order of the names. Throws
    /// std::invalid_argument when the map has "colours" already.
    void Set(configuration::node::Map& map) const override;
    Type GetAlgorithmType() const override;

    Colours const& GetColours() const noexcept { return colours_; }

    static char const* GetColoursNode() noexcept { return ColoursNode; }

private:
    Colours colours_;
};

}  // namespace qel::algorithm::info
