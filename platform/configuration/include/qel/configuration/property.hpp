#pragma once

#include <concepts>
#include <functional>
#include <set>
#include <string>
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

// The object behind an untyped pointer to its base class.
template <class Class, class Base>
Class& Downcast(void* object) {
    return static_cast<Class&>(*static_cast<Base*>(object));
}

template <class Class, class Base, class NodeType, class Member>
std::function<void(void*, object::Object const&)> MakeSetter(Member member) {
    return [member = std::move(member)](void* object, object::Object const& node) {
        std::invoke(member, Downcast<Class, Base>(object), node.As<NodeType>().Get());
    };
}

}  // namespace detail

/// A property of Class with a number, text or bool that a member function (or any callable that takes a Class& and the
/// value) takes, for example
/// `MakeProperty<Motion, Algorithm>("threshold", "what it does", 2.5, Range{1.0, 10.0}, &Motion::SetThreshold)`.
///
/// Base: the class that the untyped pointer of the setter points to, from which Class derives (not virtually); the two
/// need not share their address. The setter throws object::BadCast for a node of another type.
template <class Class, class Base = Class, object::PrimitiveValue T, class Member>
requires std::derived_from<Class, Base> && std::invocable<Member const&, Class&, T> Property
MakeProperty(std::string name, std::string description, T defaultValue, Validator validator, Member member,
             node::Options options = {}) {
    Schema schema(name, std::move(description), std::move(defaultValue), options, std::move(validator));
    return {std::move(name), {std::move(schema)}, detail::MakeSetter<Class, Base, node::Primitive<T>>(member)};
}

/// The same without limits.
template <class Class, class Base = Class, object::PrimitiveValue T, class Member>
requires std::derived_from<Class, Base> && std::invocable<Member const&, Class&, T> Property
MakeProperty(std::string name, std::string description, T defaultValue, Member member, node::Options options = {}) {
    return MakeProperty<Class, Base>(std::move(name), std::move(description), std::move(defaultValue), Validator(),
                                     std::move(member), options);
}

/// A property of Class that is one of a set of choices; the member function takes the text.
template <class Class, class Base = Class, class Member>
requires std::derived_from<Class, Base> && std::invocable<Member const&, Class&, std::string> Property
MakeProperty(std::string name, std::string description, std::string defaultValue, std::set<std::string> choices,
             Member member, node::Options options = {}) {
    Schema schema(name, std::move(description), std::move(defaultValue), options, std::move(choices));
    return {std::move(name), {std::move(schema)}, detail::MakeSetter<Class, Base, node::DynamicEnum>(member)};
}

}  // namespace qel::configuration
