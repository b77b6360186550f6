#include "qel/object/primitive.hpp"

#include "qel/object/parse.hpp"

namespace qel::object {

template <PrimitiveValue T, class Base>
Primitive<T, Base>::Primitive(T value) : Base(type::Name<Primitive>::Value), value_(std::move(value)) {}

template <PrimitiveValue T, class Base>
void Primitive<T, Base>::Set(T value) {
    value_ = std::move(value);
}

template <PrimitiveValue T, class Base>
void Primitive<T, Base>::Set(Object const& other) {
    using Text = Primitive<std::string>;
    if (other.GetTypeId() == hash::MurmurThree32(type::Name<Text>::Value)) {
        value_ = Parse<T>(other.As<Text>().Get());
    } else {
        value_ = other.As<Primitive>().Get();
    }
}

template class Primitive<std::string>;
template class Primitive<bool>;
template class Primitive<unsigned char>;
template class Primitive<std::int32_t>;
template class Primitive<std::int64_t>;
template class Primitive<std::uint32_t>;
template class Primitive<double>;

}  // namespace qel::object
