#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "qel/object/primitive.hpp"

namespace qel::configuration::node {

/// A new value for the node of a name: one step of a batch of changes.
struct Change {
    Change(std::string node, std::shared_ptr<object::Object const> object)
        : name(std::move(node)), value(std::move(object)) {}
    template <object::PrimitiveValue T>
    Change(std::string node, T plain) : Change(std::move(node), object::Make(std::move(plain))) {}
    /// A change without a value, which every operation refuses.
    Change(std::string node, std::nullptr_t) : name(std::move(node)) {}
    Change(std::string node, char const* text) : Change(std::move(node), object::Make(text)) {}

    /// The node's name, or dotted path, as the operation takes it.
    std::string name;
    /// The new value: of the node's type, or a String that is parsed.
    std::shared_ptr<object::Object const> value;
};

}  // namespace qel::configuration::node
