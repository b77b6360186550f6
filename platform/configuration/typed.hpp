#pragma once

#include <memory>
#include <string>

#include "qel/object/primitive.hpp"
#include "read_json.hpp"
#include "write_json.hpp"

/// What nodes with values of type T do with the objects that hold them. The objects are known to be of the type, except
/// the one that is converted.
namespace qel::configuration::detail {

template <object::PrimitiveValue T>
T const& ValueOf(object::Object const& object) noexcept {
    return static_cast<object::Primitive<T> const&>(object).Get();
}

template <object::PrimitiveValue T>
std::shared_ptr<object::Object const> ConvertObject(object::Object const& object) {
    auto converted = std::make_shared<object::Primitive<T>>();
    converted->Set(object);
    return converted;
}

template <object::PrimitiveValue T>
std::shared_ptr<object::Object const> ReadObjectOf(cereal::JSONInputArchive& archive, std::string const& path) {
    return object::Make(ReadJson<T>(archive, path));
}

}  // namespace qel::configuration::detail
