#pragma once

#include <type_traits>

#include "qel/hash/murmur_three_32.hpp"
#include "qel/object/bad_cast.hpp"
#include "qel/object/export.hpp"
#include "qel/type/name.hpp"

namespace qel::object {

/// The base of everything whose type is asked for at run time: values (Primitive) and configuration nodes.
///
/// An object knows the dotted name of its type and the name's hash, its identifier: fixed, so any thread may ask.
class QEL_OBJECT_EXPORT Object {
public:
    virtual ~Object();

    /// The identifier of the type: the hash of GetTypeName().
    hash::MurmurThree32 GetTypeId() const noexcept { return typeId_; }
    /// The dotted name of the type, such as "qel.object.String".
    char const* GetTypeName() const noexcept { return typeName_; }

    /// Whether this object is a T (or derived from it).
    template <class T>
    bool Is() const noexcept {
        if constexpr (std::is_same_v<T, Object>) {
            return true;
        } else {
            return dynamic_cast<T const*>(this) != nullptr;
        }
    }

    /// This object as a T; throws BadCast, which names both types, when it is not one.
    template <class T>
    T const& As() const {
        if (!Is<T>()) throw BadCast(typeName_, type::Name<T>::Value);
        return dynamic_cast<T const&>(*this);
    }

protected:
    /// typeName: not owned, of static storage.
    explicit Object(char const* typeName) noexcept;
    Object(Object const&) = default;
    // The type stays: what is assigned are the values of the derived classes.
    Object& operator=(Object const&) noexcept { return *this; }

private:
    hash::MurmurThree32 typeId_;
    char const* typeName_;
};

}  // namespace qel::object

template <>
struct qel::type::Name<qel::object::Object> {
    static constexpr char const* Value = "qel.object.Object";
};
