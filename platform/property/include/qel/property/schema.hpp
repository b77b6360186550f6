#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qel/configuration/property.hpp"
#include "qel/configuration/schema.hpp"
#include "qel/object/primitive.hpp"
#include "qel/property/export.hpp"

namespace qel::property {

/// Describes a property of a class of objects, its owners: name, type, default, what is allowed, how it is read and
/// written. Owners are reached through untyped pointers. Any thread may read it.
class QEL_PROPERTY_EXPORT Schema {
public:
    /// Applies a value, given as a configuration node, to an owner.
    using Setter = std::function<void(void*, object::Object const&)>;
    /// The owner's current value, of the described type.
    using Getter = std::function<std::shared_ptr<object::Object const>(void const*)>;

    /// value: describes the value; its path is the property's name. setter: empty for a property that is read only.
    /// getter: empty for one whose value is what was set last, at first the default.
    /// Throws std::invalid_argument for a value without a default.
    Schema(configuration::Schema value, Setter setter, Getter getter = {});
    /// The property that a configuration node sets. Throws std::invalid_argument when none of its schemas has its name.
    explicit Schema(configuration::Property const& property);

    std::string const& GetName() const noexcept { return value_.GetPath(); }
    configuration::Schema const& GetValue() const noexcept { return value_; }
    Setter const& GetSetter() const noexcept { return setter_; }
    Getter const& GetGetter() const noexcept { return getter_; }
    /// Whether users may not write the property: it has no setter, or the read-only option.
    bool IsReadOnly() const noexcept;

    /// Whether both describe the same: all of the value, and whether it can be written and read from the owner.
    bool operator==(Schema const& other) const;

private:
    configuration::Schema value_;
    Setter setter_;
    Getter getter_;
};

/// A property of Class with a getter, a member function (or any callable) that gives the number, text or bool, and
/// otherwise the arguments of configuration::MakeProperty, for example
/// `MakeSchema<Motion, Algorithm>(&Motion::GetThreshold, "threshold", "what it does", 2.5, Range{1.0, 10.0},
/// &Motion::SetThreshold)`. Base: the class that the untyped pointers point to.
template <class Class, class Base = Class, class Get, class... Arguments>
requires std::derived_from<Class, Base> && std::invocable<Get const&, Class const&> Schema
MakeSchema(Get getter, Arguments&&... arguments) {
    using T = std::remove_cvref_t<std::invoke_result_t<Get const&, Class const&>>;
    auto property = configuration::MakeProperty<Class, Base>(std::forward<Arguments>(arguments)...);
    return Schema(std::move(property.schemas.front()), std::move(property.setter), [getter](void const* owner) {
        auto const& object = static_cast<Class const&>(*static_cast<Base const*>(owner));
        return object::Make<T>(std::invoke(getter, object));
    });
}

/// A property of Class that can only be read.
template <class Class, class Base = Class, class Get>
requires std::derived_from<Class, Base> && std::invocable<Get const&, Class const&> Schema
MakeReadOnlySchema(Get getter, std::string name, std::string description) {
    using T = std::remove_cvref_t<std::invoke_result_t<Get const&, Class const&>>;
    configuration::Schema value(std::move(name), std::move(description), T(), {configuration::node::Option::ReadOnly});
    return Schema(std::move(value), {}, [getter](void const* owner) {
        auto const& object = static_cast<Class const&>(*static_cast<Base const*>(owner));
        return object::Make<T>(std::invoke(getter, object));
    });
}

}  // namespace qel::property
