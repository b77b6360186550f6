#include "number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>

namespace qel::configuration::detail {

namespace {

template <class T>
std::string Digits(T number) {
    std::array<char, 64> text{};
    // Whole numbers of usual size read better without an exponent.
    bool const isPlain = std::trunc(number) == number && std::abs(number) < static_cast<T>(1e15);
    auto const result = isPlain
                            ? std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed)
                            : std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

}  // namespace

std::string NumberText(long double number) {
    auto const narrow = static_cast<double>(number);
    return narrow == number ? Digits(narrow) : Digits(number);
}

}  // namespace qel::configuration::detail
