#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "qel/configuration/export.hpp"
#include "qel/configuration/node/option.hpp"
#include "qel/configuration/validator.hpp"
#include "qel/object/primitive.hpp"

namespace qel::configuration {

class Node;

/// Describes a node that node::Map::Schema brings into being below a map.
///
/// path: the node's name, or a dotted path to it. A path that ends in "[*]", such as "classes[*]", describes the
/// elements of a vector and brings the empty vector into being. The constructors throw std::invalid_argument for a path
/// with an empty name, and what making the node would: std::out_of_range for a refused default. Any thread may read.
class QEL_CONFIGURATION_EXPORT Schema {
public:
    /// A node without a default: a map, or elements of which each has the type of the value it is made from.
    Schema(std::string path, std::string description, node::Options options = {});
    /// A value whose type is that of the default.
    template <object::PrimitiveValue T>
    Schema(std::string path, std::string description, T defaultValue, node::Options options = {},
           Validator validator = {})
        : Schema(std::move(path), std::move(description), object::Make(std::move(defaultValue)), options,
                 std::move(validator), std::nullopt) {}
    Schema(std::string path, std::string description, char const* defaultValue, node::Options options = {},
           Validator validator = {})
        : Schema(std::move(path), std::move(description), object::Make(defaultValue), options, std::move(validator),
                 std::nullopt) {}
    /// An enumeration: a text that is one of the choices.
    Schema(std::string path, std::string description, std::string defaultValue, node::Options options,
           std::set<std::string> choices)
        : Schema(std::move(path), std::move(description), object::Make(std::move(defaultValue)), options, Validator(),
                 std::move(choices)) {}

    std::string const& GetPath() const noexcept { return path_; }
    std::string const& GetDescription() const noexcept { return description_; }
    node::Options GetOptions() const noexcept { return options_; }
    /// Null when there is none.
    std::shared_ptr<object::Object const> const& GetDefault() const noexcept { return default_; }
    Validator const& GetValidator() const noexcept { return validator_; }
    /// The choices of an enumeration; nothing for other nodes.
    std::optional<std::set<std::string>> const& GetChoices() const noexcept { return choices_; }

    /// A new node of this description under a name; the path does not count.
    std::shared_ptr<Node> Make(std::string name) const;
    /// The same with another default, which is converted to the described type.
    std::shared_ptr<Node> Make(std::string name, object::Object const& defaultValue) const;

private:
    Schema(std::string path, std::string description, std::shared_ptr<object::Object const> defaultValue,
           node::Options options, Validator validator, std::optional<std::set<std::string>> choices);

    std::string path_;
    std::string description_;
    std::shared_ptr<object::Object const> default_;
    node::Options options_;
    Validator validator_;
    std::optional<std::set<std::string>> choices_;
};

}  // namespace qel::configuration
