#pragma once

#include <memory>
#include <string>
#include <utility>

#include "qel/configuration/node/value.hpp"
#include "qel/object/primitive.hpp"
#include "qel/property/export.hpp"
#include "qel/property/schema.hpp"

namespace qel::property {

/// One property of one owner, read and written by type.
///
/// Any thread may read and write it; the owner's getter and setter are called by one thread at a time. A setter must
/// not use its own property. The owner must outlive the property.
class QEL_PROPERTY_EXPORT Property {
public:
    /// node: the configuration node that the property is tied to, or null. The owner takes the node's value at once (a
    /// property that is read only gives its own to the node), and from then on each takes the changes of the other.
    /// Throws object::BadCast for a node of another type than the schema's, and what the setter throws.
    Property(Schema schema, void* owner, std::shared_ptr<configuration::node::Value> node = {});
    Property(Property const&) = delete;
    Property& operator=(Property const&) = delete;
    /// Waits for a change of the node that is being applied on another thread.
    ~Property();

    Schema const& GetSchema() const noexcept;
    std::string const& GetName() const noexcept { return GetSchema().GetName(); }
    /// Whether changes go to and come from a configuration node.
    bool IsBound() const noexcept;

    /// The owner's value. Throws std::logic_error when there is no owner, and what the getter throws.
    std::shared_ptr<object::Object const> GetValue() const;
    /// The same as a T; throws object::BadCast when it is of another type.
    template <object::PrimitiveValue T>
    T Get() const {
        return GetValue()->template As<object::Primitive<T>>().Get();
    }

    /// Gives the owner a value, then the node, whose other handlers run before this returns. A String is parsed.
    /// Changes nothing and throws std::logic_error for a property that is read only or has no owner, and for a frozen
    /// node; object::BadCast for a value of another type; std::out_of_range, with what is allowed, for one that is not;
    /// what the setter throws. What a handler of the node throws comes out when all has been done.
    void Set(object::Object const& value);
    template <object::PrimitiveValue T>
    void Set(T value) {
        Set(*object::Make(std::move(value)));
    }
    void Set(char const* text) { Set(*object::Make(text)); }

    /// Gives the owner's value to the node, for a property that the owner changes by itself; without a node, or a
    /// change, does nothing.
    void Publish();

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::property
