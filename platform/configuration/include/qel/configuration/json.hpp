#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qel/configuration/export.hpp"
#include "qel/configuration/node.hpp"

/// A node's data and schema as JSON texts on one line. A map is the object of its members; any other node is an object
/// with one member, of the node's name ("value" when it has none).
namespace qel::configuration::json {

/// The current values; throws std::logic_error for a write-only node.
QEL_CONFIGURATION_EXPORT std::string Data(Node const& node);
/// The default values.
QEL_CONFIGURATION_EXPORT std::string Defaults(Node const& node);
/// The JSON schema, here without a member around it.
QEL_CONFIGURATION_EXPORT std::string Schema(Node const& node);

/// Stages the values of a text that Data wrote, or any part of its members, and returns the nodes that it staged;
/// commit and fire the node to put them to use. Takes untrusted text. All or nothing: throws what Node::StageData
/// throws, and serialize::JsonError, with line and column, for a text that is not JSON or nested too deeply.
QEL_CONFIGURATION_EXPORT std::vector<std::shared_ptr<Node>> Stage(Node& node, std::string const& text);

}  // namespace qel::configuration::json
