#include "qel/configuration/node/primitive.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include "typed.hpp"

namespace qel::configuration::node {

namespace {

template <class T>
constexpr bool IsInteger = object::Number<T> && !std::is_same_v<T, double>;

template <class T>
char const* JsonType() {
    if constexpr (std::is_same_v<T, std::string>) {
        return "string";
    } else if constexpr (std::is_same_v<T, bool>) {
        return "boolean";
    } else {
        return std::is_same_v<T, double> ? "number" : "integer";
    }
}

// The validator as a node keeps it: null when it allows everything.
template <class T>
std::shared_ptr<Validator const> Share(Validator validator, std::string const& name) {
    if (!validator.IsFor<T>()) {
        throw std::invalid_argument(name + ": the validator is not one for values of type " + JsonType<T>());
    }
    return validator.IsEmpty() ? nullptr : std::make_shared<Validator const>(std::move(validator));
}

// Checks even without a validator: a number must be finite in any case.
template <class T>
void Check(T const& value, Validator const* validator, std::string const& path) {
    (validator ? *validator : Validator()).Check(value, path);
}

// A limit as an integer where it is one, as a number otherwise.
void WriteLimit(cereal::JSONOutputArchive& archive, char const* name, long double limit) {
    constexpr long double End = 9223372036854775808.0L;  // 2^63
    if (std::trunc(limit) == limit && limit >= -End && limit < End) {
        detail::WriteJson(archive, name, static_cast<std::int64_t>(limit));
    } else {
        detail::WriteJson(archive, name, static_cast<double>(limit));
    }
}

// always: write the own limits of the type where the validator has none.
template <class T>
void WriteLimits(cereal::JSONOutputArchive& archive, Validator const& validator, bool always) {
    using Limits = std::numeric_limits<T>;
    auto const& minimum = validator.GetMinimum();
    auto const& maximum = validator.GetMaximum();
    if (minimum) {
        WriteLimit(archive, "minimum", *minimum);
    } else if (IsInteger<T> && always) {
        WriteLimit(archive, "minimum", Limits::min());
    }
    if (maximum) {
        WriteLimit(archive, "maximum", *maximum);
    } else if (IsInteger<T> && always) {
        WriteLimit(archive, "maximum", Limits::max());
    }
}

}  // namespace

template <object::PrimitiveValue T>
Primitive<T>::Primitive(std::string name, std::string description, T defaultValue, Options options, Validator validator)
    : Value(type::Name<Primitive>::Value, name, std::move(description), options, object::Make(std::move(defaultValue)),
            Share<T>(std::move(validator), name)) {
    Check(Get(), GetValidator().get(), GetName());
}

template <object::PrimitiveValue T>
std::shared_ptr<Primitive<T>> Primitive<T>::Make(std::string name, std::string description, T defaultValue,
                                                 Options options, Validator validator) {
    return std::make_shared<Primitive>(std::move(name), std::move(description), std::move(defaultValue), options,
                                       std::move(validator));
}

template <object::PrimitiveValue T>
T Primitive<T>::Get() const {
    return detail::ValueOf<T>(*GetValue());
}

template <object::PrimitiveValue T>
void Primitive<T>::Stage(T value) {
    StageObject(object::Make(std::move(value)));
}

template <object::PrimitiveValue T>
void Primitive<T>::Set(T value) {
    SetObject(object::Make(std::move(value)));
}

template <object::PrimitiveValue T>
void Primitive<T>::Schema(cereal::JSONOutputArchive& archive) const {
    detail::WriteJson(archive, "type", JsonType<T>());
    detail::WriteJson(archive, "default", detail::ValueOf<T>(*GetDefault()));
    static Validator const Everything;
    auto const shared = GetValidator();
    Validator const& validator = shared ? *shared : Everything;
    if constexpr (object::Number<T>) {
        bool const isGauge = GetOptions().Test(Option::Gauge);
        WriteLimits<T>(archive, validator, isGauge);
        if (isGauge) {
            detail::WriteJson(archive, "readOnly", true);
            return;
        }
    } else if (auto const pattern = validator.GetPattern()) {
        detail::WriteJson(archive, "pattern", *pattern);
    }
    WriteAccess(archive);
}

template <object::PrimitiveValue T>
Node::ObjectPtr Primitive<T>::Convert(object::Object const& value) const {
    return detail::ConvertObject<T>(value);
}

template <object::PrimitiveValue T>
Node::ObjectPtr Primitive<T>::Read(cereal::JSONInputArchive& archive, std::string const& path) const {
    return detail::ReadObjectOf<T>(archive, path);
}

template <object::PrimitiveValue T>
void Primitive<T>::Write(cereal::JSONOutputArchive& archive, object::Object const& value) const {
    detail::WriteJson(archive, detail::ValueOf<T>(value));
}

template <object::PrimitiveValue T>
bool Primitive<T>::IsSame(object::Object const& left, object::Object const& right) const noexcept {
    return detail::ValueOf<T>(left) == detail::ValueOf<T>(right);
}

template <object::PrimitiveValue T>
void Primitive<T>::CheckAllowedLocked(object::Object const& value, std::string const& path) const {
    Check(detail::ValueOf<T>(value), GetValidatorLocked().get(), path);
}

template class Primitive<std::string>;
template class Primitive<bool>;
template class Primitive<unsigned char>;
template class Primitive<std::int32_t>;
template class Primitive<std::int64_t>;
template class Primitive<std::uint32_t>;
template class Primitive<double>;

}  // namespace qel::configuration::node
