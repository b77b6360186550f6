#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qel/configuration/node.hpp"
#include "qel/configuration/node/change.hpp"
#include "qel/configuration/schema.hpp"

namespace qel::configuration::node {

/// Named children, in the order in which they were inserted. Any thread, as every node.
class QEL_CONFIGURATION_EXPORT Map final : public Node {
public:
    /// Says whether the map takes a node as a child.
    using Predicate = std::function<bool(Node const&)>;

    Map(std::string name, std::string description, Options options, Timestamp timestamp, Predicate predicate = {});

    /// A map without children, of the current time.
    static std::shared_ptr<Map> Make(std::string name, std::string description = {}, Options options = {});

    /// The node at a dotted path below this map, such as "algorithms.info" or "info.classes[0]", or null. A child whose
    /// own name holds dots is found as well.
    std::shared_ptr<Node> Find(std::string_view path) const;
    /// All children in their order.
    std::vector<std::shared_ptr<Node>> GetChildren() const { return Node::GetChildren(); }

    /// Adds a child and fires the map. Throws std::invalid_argument for a null or nameless node, a name that is taken,
    /// a node that is part of a tree already or that the predicate refuses, and std::logic_error for a frozen map.
    void Insert(std::shared_ptr<Node> child);
    /// Takes the children of these names out, as far as they are there, and adds others behind those that stay: in one
    /// step, or nothing of it when it throws what Insert throws. Fires nothing: the next Fire of this map, or of one
    /// above, calls its handlers, as after a commit.
    void Exchange(std::vector<std::string> const& removed, std::vector<std::shared_ptr<Node>> added);

    /// Sets values below this map, then fires those that changed: all of them, or none when one is refused. Throws
    /// std::out_of_range for a path without a node, object::BadCast for one without a value, std::invalid_argument for
    /// a change without a value, and what Value::Set throws.
    void Set(std::vector<Change> changes);
    void Set(std::string path, std::shared_ptr<object::Object const> value) {
        SetOne(Change(std::move(path), std::move(value)));
    }
    template <object::PrimitiveValue T>
    void Set(std::string path, T value) {
        SetOne(Change(std::move(path), std::move(value)));
    }
    void Set(std::string path, std::nullptr_t) { SetOne(Change(std::move(path), nullptr)); }
    void Set(std::string path, char const* text) { SetOne(Change(std::move(path), text)); }

    using Node::Schema;
    /// Writes "type" and "properties", each child with its description, and "readOnly".
    void Schema(cereal::JSONOutputArchive& archive) const override;
    /// Brings the nodes that the schemas describe into being, in their order, with the maps and vectors on their paths
    /// (which get the schema's options and no description). A node that exists already and is of the described type
    /// stays as it is; one of another type is a std::invalid_argument. Whatever is thrown, what has been made by then
    /// stays, and applying the schemas again makes the rest.
    void Schema(std::vector<configuration::Schema> const& schemas);

private:
    bool IsGroup() const noexcept override { return true; }
    void ReadData(cereal::JSONInputArchive& archive, Plan& plan) override;
    void WriteData(cereal::JSONOutputArchive& archive, Which which) const override;
    void CheckLocked(object::Object const& value) const override;
    bool IsCurrentLocked(object::Object const& value) const noexcept override;
    void CommitLocked(ObjectPtr& value) noexcept override;

    /// Throws std::invalid_argument for what cannot be a child of any name.
    void CheckChild(Node const* child) const;
    void SetOne(Change change);
    std::shared_ptr<Node> FindLocked(std::string_view path) const;
    /// The child of a name, or the element of a child for a name such as "classes[0]".
    std::shared_ptr<Node> FindStepLocked(std::string_view step) const;
    std::shared_ptr<Node> FindChildLocked(std::string_view name) const;
    std::shared_ptr<Node> FindChild(std::string_view name) const;
    void Apply(configuration::Schema const& schema);
    void ApplyHere(configuration::Schema const& schema, std::string const& name);

    Predicate const predicate_;
};

}  // namespace qel::configuration::node

template <>
struct qel::type::Name<qel::configuration::node::Map> {
    static constexpr char const* Value = "qel.configuration.node.Map";
};
