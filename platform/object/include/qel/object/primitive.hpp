#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "qel/object/object.hpp"
#include "qel/object/primitive_value.hpp"

namespace qel::object {

/// A value of type T as a run-time typed object.
///
/// Base: the class that it extends, Object or one derived from it. A value like any other: one thread at a time.
template <PrimitiveValue T, class Base = Object>
class QEL_OBJECT_EXPORT Primitive : public Base {
public:
    explicit Primitive(T value = T());

    T const& Get() const noexcept { return value_; }
    void Set(T value);

    /// Takes the value of another object: of one of this same type as it is, of a String by parsing its text (see
    /// Parse). Throws BadCast for any other type, and what Parse throws; the value is unchanged then.
    void Set(Object const& other);

    friend bool operator==(Primitive const& left, Primitive const& right) { return left.value_ == right.value_; }

private:
    T value_;
};

/// A new constant object that holds a value.
template <PrimitiveValue T>
std::shared_ptr<Primitive<T> const> Make(T value) {
    return std::make_shared<Primitive<T> const>(std::move(value));
}

/// A new constant String object.
inline std::shared_ptr<Primitive<std::string> const> Make(char const* text) { return Make(std::string(text)); }

}  // namespace qel::object

template <>
struct qel::type::Name<qel::object::Primitive<std::string>> {
    static constexpr char const* Value = "qel.object.String";
};
template <>
struct qel::type::Name<qel::object::Primitive<bool>> {
    static constexpr char const* Value = "qel.object.Bool";
};
template <>
struct qel::type::Name<qel::object::Primitive<unsigned char>> {
    static constexpr char const* Value = "qel.object.UInt8";
};
template <>
struct qel::type::Name<qel::object::Primitive<std::int32_t>> {
    static constexpr char const* Value = "qel.object.Int32";
};
template <>
struct qel::type::Name<qel::object::Primitive<std::int64_t>> {
    static constexpr char const* Value = "qel.object.Int64";
};
template <>
struct qel::type::Name<qel::object::Primitive<std::uint32_t>> {
    static constexpr char const* Value = "qel.object.UInt32";
};
template <>
struct qel::type::Name<qel::object::Primitive<double>> {
    static constexpr char const* Value = "qel.object.Double";
};

namespace qel::object {

extern template class Primitive<std::string>;
extern template class Primitive<bool>;
extern template class Primitive<unsigned char>;
extern template class Primitive<std::int32_t>;
extern template class Primitive<std::int64_t>;
extern template class Primitive<std::uint32_t>;
extern template class Primitive<double>;

}  // namespace qel::object
