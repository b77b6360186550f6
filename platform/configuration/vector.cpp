#include "qel/configuration/node/vector.hpp"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "read_json.hpp"
#include "tree_lock.hpp"
#include "write_json.hpp"

namespace qel::configuration::node {

using detail::TreeLock;

// A whole list of elements as a value that can be staged.
class Vector::Elements : public object::Object {
public:
    explicit Elements(Nodes elements) : Object("qel.configuration.node.Vector.Elements"), nodes(std::move(elements)) {}

    // Exchanged when the list is committed, by whoever holds the only pointer to it and the lock of the trees.
    mutable Nodes nodes;
};

Vector::Vector(std::string name, std::string description, Options options,
               std::optional<configuration::Schema> elements)
    : Dynamic(type::Name<Vector>::Value, std::move(name), std::move(description), options,
              std::chrono::system_clock::now()),
      schema_(elements ? std::move(*elements) : configuration::Schema("elements[*]", "", options)),
      prototype_(schema_.GetDefault() ? Node::GetPtr<Value>(schema_.Make("")) : nullptr) {}

std::shared_ptr<Vector> Vector::Make(std::string name, std::string description, Options options,
                                     std::optional<configuration::Schema> elements) {
    return std::make_shared<Vector>(std::move(name), std::move(description), options, std::move(elements));
}

std::size_t Vector::GetSize() const { return GetChildren().size(); }

std::vector<std::shared_ptr<Node>> Vector::GetElements() const { return GetChildren(); }

std::shared_ptr<Node> Vector::Find(std::size_t index) const {
    TreeLock const lock;
    return FindLocked(index);
}

std::shared_ptr<Node> Vector::FindLocked(std::size_t index) const {
    auto const& elements = GetChildrenLocked();
    return index < elements.size() ? elements[index] : nullptr;
}

std::shared_ptr<Node> Vector::MakeElement(std::string name, object::Object const& value,
                                          std::string const& path) const {
    if (!prototype_) return schema_.Make(std::move(name), value);
    ObjectPtr const converted = prototype_->Convert(value);
    {
        TreeLock const lock;
        prototype_->CheckAllowedLocked(*converted, path);
    }
    return schema_.Make(std::move(name), *converted);
}

Node::Nodes Vector::MakeElements(std::vector<Change> changes, std::size_t index) const {
    std::string const path = GetPath();
    Nodes elements;
    for (Change& change : changes) {
        std::string const elementPath = path + '[' + std::to_string(index++) + ']';
        if (!change.value) throw std::invalid_argument(elementPath + ": there is no value to add");
        elements.push_back(MakeElement(std::move(change.name), *change.value, elementPath));
    }
    return elements;
}

void Vector::Add(std::vector<Change> changes) {
    Nodes const elements = MakeElements(std::move(changes), GetSize());
    Nodes const self{GetPtr()};
    auto const now = std::chrono::system_clock::now();
    {
        TreeLock const lock;
        CheckNotFrozenLocked();
        AdoptLocked(elements);
        SetTimestampLocked(now);
    }
    if (!elements.empty()) FireAll(self);
}

void Vector::Replace(std::vector<Change> changes) {
    // Holds the former ones afterwards, which go when no lock is held.
    Nodes elements = MakeElements(std::move(changes), 0);
    Nodes const self{GetPtr()};
    auto const now = std::chrono::system_clock::now();
    {
        TreeLock const lock;
        CheckNotFrozenLocked();
        if (AreCurrentLocked(elements)) return;
        ReplaceChildrenLocked(elements);
        SetTimestampLocked(now);
    }
    FireAll(self);
}

void Vector::Schema(cereal::JSONOutputArchive& archive) const {
    detail::WriteJson(archive, "type", "array");
    archive.setNextName("items");
    archive.startNode();
    if (!schema_.GetDescription().empty()) detail::WriteJson(archive, "description", schema_.GetDescription());
    if (prototype_) prototype_->Schema(archive);
    archive.finishNode();
    WriteAccess(archive);
}

void Vector::ReadData(cereal::JSONInputArchive& archive, Plan& plan) {
    std::string const path = GetPath();
    Nodes elements;
    detail::ReadList(archive, path, [&](std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            std::string const elementPath = path + '[' + std::to_string(i) + ']';
            ObjectPtr const value =
                prototype_ ? prototype_->Read(archive, elementPath) : detail::ReadAnyJson(archive, elementPath);
            elements.push_back(MakeElement("", *value, elementPath));
        }
    });
    plan.emplace_back(GetPtr(), std::make_shared<Elements const>(std::move(elements)));
}

void Vector::WriteData(cereal::JSONOutputArchive& archive, Which which) const {
    archive.startNode();
    archive.makeArray();
    if (which == Which::Current) WriteChildren(archive, which);
    archive.finishNode();
}

void Vector::CheckLocked(object::Object const&) const { CheckNotFrozenLocked(); }

bool Vector::IsCurrentLocked(object::Object const& value) const noexcept {
    return AreCurrentLocked(static_cast<Elements const&>(value).nodes);
}

bool Vector::AreCurrentLocked(Nodes const& others) const noexcept {
    // Elements are values: nothing else is ever made one.
    auto const isEqual = [](auto const& left, auto const& right) {
        return static_cast<Value const&>(*left).IsEqualLocked(static_cast<Value const&>(*right));
    };
    Nodes const& elements = GetChildrenLocked();
    return std::equal(elements.begin(), elements.end(), others.begin(), others.end(), isEqual);
}

void Vector::CommitLocked(ObjectPtr& value) noexcept {
    ReplaceChildrenLocked(static_cast<Elements const&>(*value).nodes);
}

}  // namespace qel::configuration::node
