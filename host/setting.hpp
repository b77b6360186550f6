#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qel/configuration/node/map.hpp"

namespace qel::host {

/// A wish for the value of one node of a configuration.
struct Setting {
    std::string name;
    std::string value;
};

/// Takes "name=value" apart at the first equals sign; throws UsageError when there is none, or no name before it.
Setting ParseSetting(std::string_view text);

/// The names of all nodes with a value below a map, in their order; those of nodes further down are dotted paths.
std::vector<std::string> ListValues(configuration::node::Map const& map);

/// Sets the nodes of a configuration from texts, each read as its node's type wants it, and tells whoever follows them.
/// owner: whose configuration it is, for messages. Throws UsageError, which names the nearest property for an unknown
/// one and the range for a value out of it; the settings before that one stay in effect.
void Apply(std::vector<Setting> const& settings, configuration::node::Map& map, std::string const& owner);

}  // namespace qel::host
