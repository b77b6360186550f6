#pragma once

#include <concepts>
#include <functional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/schema.hpp"

namespace qel::configuration {

/// Something of an object that a configuration node of the same name sets.
struct Property {
    std::string name;
    /// The nodes to make for it.
    std::vector<Schema> schemas;
    /// Applies the value of a node to the object, which is passed as an untyped pointer.
    std::function<void(void*, object::Object const&)> setter;
};

namespace detail {

// The type of value that a default gives: texts may be given as literals.
template <class Default>
using PropertyValue = std::conditional_t<std::convertible_to<Default, std::string>, std::string, Default>;

// What applies a value of type T to a Class&: a member function, or any callable.
template <class Member, class Class, class T>
concept SetterOf = object::PrimitiveValue<T> && std::invocable<Member const&, Class&, T>;

template <class Class, class Base, class NodeType, class Member>
std::function<void(void*, object::Object const&)> MakeSetter(Member member) {
    static_assert(std::derived_from<Class, Base>, "The setter's pointer is to a base class of the class it sets");
    return [member = std::move(member)](void* object, object::Object const& node) {
        std::invoke(member, static_cast<Class&>(*static_cast<Base*>(object)), node.As<NodeType>().Get());
    };
}

}  // namespace detail

/// A property of Class with a number, text or bool that a member function (or any callable that takes a Class& and the
/// value) takes, for example
/// `MakeProperty<Motion, Algorithm>("threshold", "what it does", 2.5, Range{1.0, 10.0}, &Motion::SetThreshold)`.
///
/// Base: the class that the untyped pointer of the setter points to, from which Class derives (not virtually); the two
/// need not share their address. The setter throws object::BadCast for a node of another type.
template <class Class, class Base = Class, class Default,
          detail::SetterOf<Class, detail::PropertyValue<Default>> Member>
Property MakeProperty(std::string name, std::string description, Default defaultValue, Validator validator,
                      Member member, node::Options options = {}) {
    using NodeType = node::Primitive<detail::PropertyValue<Default>>;
    Schema schema(name, std::move(description), std::move(defaultValue), options, std::move(validator));
    return {std::move(name), {std::move(schema)}, detail::MakeSetter<Class, Base, NodeType>(std::move(member))};
}

/// The same without limits.
template <class Class, class Base = Class, class Default,
          detail::SetterOf<Class, detail::PropertyValue<Default>> Member>
Property MakeProperty(std::string name, std::string description, Default defaultValue, Member member,
                      node::Options options = {}) {
    return MakeProperty<Class, Base>(std::move(name), std::move(description), std::move(defaultValue), Validator(),
                                     std::move(member), options);
}

/// A property of Class that is one of a set of choices; the member function takes the text.
template <class Class, class Base = Class, detail::SetterOf<Class, std::string> Member>
Property MakeProperty(std::string name, std::string description, std::string defaultValue,
                      std::set<std::string> choices, Member member, node::Options options = {}) {
    using NodeType = node::DynamicEnum;
    Schema schema(name, std::move(description), std::move(defaultValue), options, std::move(choices));
    return {std::move(name), {std::move(schema)}, detail::MakeSetter<Class, Base, NodeType>(std::move(member))};
}

}  // namespace qel::configuration
