#include "qel/object/object.hpp"

namespace qel::object {

Object::Object(char const* typeName) noexcept : typeId_(typeName), typeName_(typeName) {}

Object::~Object() = default;

}  // namespace qel::object
