#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qel/configuration/node/dynamic.hpp"
#include "qel/configuration/node/value.hpp"
#include "qel/configuration/schema.hpp"

namespace qel::configuration::node {

/// A list of value nodes made after one element schema, reached as "name[index]", from 0. Any thread, see Node.
class QEL_CONFIGURATION_EXPORT Vector final : public Dynamic {
public:
    /// elements: the schema of the elements; its path does not count, and neither does its default, beyond the type of
    /// the elements. Without a schema, or with one without a default, each element has the type of the value it is
    /// made from.
    explicit Vector(std::string name, std::string description = {}, Options options = {},
                    std::optional<configuration::Schema> elements = {});

    static std::shared_ptr<Vector> Make(std::string name, std::string description = {}, Options options = {},
                                        std::optional<configuration::Schema> elements = {});

    std::size_t GetSize() const;
    /// All elements in their order.
    std::vector<std::shared_ptr<Node>> GetElements() const;
    /// An element, or null when there is none of that index.
    std::shared_ptr<Node> Find(std::size_t index) const;

    /// Appends an element for each change, then fires the vector. A change's name becomes the element's name and may be
    /// empty; its value is the element's value and default. Throws what Value::Set throws, std::invalid_argument for a
    /// change without a value, and std::logic_error for a frozen vector; nothing is appended then.
    void Add(std::vector<Change> changes) override;
    /// Has the vector hold an element for each change and no others, then fires it; does nothing where its values are
    /// these already. Handlers of former elements are called no more. Throws as Add; nothing is replaced then.
    void Replace(std::vector<Change> changes);

    using Node::Schema;
    /// Writes "type", "items" and "readOnly". Data is a list; StageData replaces the whole list with new elements.
    void Schema(cereal::JSONOutputArchive& archive) const override;

private:
    friend class Map;
    class Elements;

    std::shared_ptr<Node> FindLocked(std::size_t index) const;

    /// New elements of the changes; index: where the first one will stand.
    Nodes MakeElements(std::vector<Change> changes, std::size_t index) const;
    /// Whether these elements have the values of those that are there.
    bool AreCurrentLocked(Nodes const& others) const noexcept;
    /// A new element of the value, which is checked and converted; path: where the element will stand.
    std::shared_ptr<Node> MakeElement(std::string name, object::Object const& value, std::string const& path) const;

    void ReadData(cereal::JSONInputArchive& archive, Plan& plan) override;
    void WriteData(cereal::JSONOutputArchive& archive, Which which) const override;
    void CheckLocked(object::Object const& value) const override;
    bool IsCurrentLocked(object::Object const& value) const noexcept override;
    void CommitLocked(ObjectPtr& value) noexcept override;

    configuration::Schema const schema_;
    // An element that is part of no vector; null when the schema names no type.
    std::shared_ptr<Value const> const prototype_;
};

}  // namespace qel::configuration::node

template <>
struct qel::type::Name<qel::configuration::node::Vector> {
    static constexpr char const* Value = "qel.configuration.node.Vector";
};
