#pragma once

#include <memory>
#include <string>

#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::configuration::detail {

template <class T>
std::shared_ptr<Node> MakeIf(object::Object const& type, std::string const& name, std::string const& description,
                             object::Object const& value, node::Options options, Validator const& validator) {
    if (!type.Is<object::Primitive<T>>()) return nullptr;
    object::Primitive<T> converted;
    converted.Set(value);
    return node::Primitive<T>::Make(name, description, converted.Get(), options, validator);
}

/// A node of the type that a value object has, with a default that is converted to it. Throws object::BadCast when the
/// type object holds no value.
inline std::shared_ptr<Node> MakeValue(object::Object const& type, std::string const& name,
                                       std::string const& description, object::Object const& value,
                                       node::Options options, Validator const& validator) {
    auto const make = [&]<class T>() { return MakeIf<T>(type, name, description, value, options, validator); };
    if (auto node = make.template operator()<std::string>()) return node;
    if (auto node = make.template operator()<bool>()) return node;
    if (auto node = make.template operator()<unsigned char>()) return node;
    if (auto node = make.template operator()<std::int32_t>()) return node;
    if (auto node = make.template operator()<std::int64_t>()) return node;
    if (auto node = make.template operator()<std::uint32_t>()) return node;
    if (auto node = make.template operator()<double>()) return node;
    throw object::BadCast(type.GetTypeName(), type::Name<node::Value>::Value);
}

}  // namespace qel::configuration::detail
