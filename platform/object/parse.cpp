#include "qel/object/parse.hpp"

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace qel::object {

namespace {

// Reads a whole text as one number, without regard to the locale. kind: what the number is, for the messages.
template <class T>
T ParseWhole(std::string const& text, char const* kind) {
    std::string_view digits = text;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') digits.remove_prefix(1);
    T value{};
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size()) {
        throw std::invalid_argument(std::string("Failed to parse the string into ") + kind + ": " + text);
    }
    if (error == std::errc::result_out_of_range) {
        throw std::invalid_argument(std::string("The string was out of the range of ") + kind + ": " + text);
    }
    return value;
}

template <class T>
T ParseInteger(std::string const& text) {
    using Limits = std::numeric_limits<T>;
    auto const value = ParseWhole<std::int64_t>(text, "an integer");
    if (value < Limits::min() || value > Limits::max()) {
        ThrowOutOfIntegerRange(std::to_string(value), Limits::min(), Limits::max());
    }
    return static_cast<T>(value);
}

unsigned long long ParseUnsigned(std::string const& text) {
    try {
        return std::stoull(text);
    } catch (std::invalid_argument const&) {
        throw std::invalid_argument("Failed to parse the string into an unsigned integer: " + text);
    } catch (std::out_of_range const&) {
        throw std::invalid_argument("The string was out of the range of an unsigned integer: " + text);
    }
}

}  // namespace

void ThrowOutOfIntegerRange(std::string const& number, std::int64_t minimum, std::int64_t maximum) {
    throw std::out_of_range("The parsed value '" + number + "' was out of range of the integer type: " +
                            std::to_string(minimum) + " to " + std::to_string(maximum));
}

template <>
std::string Parse<std::string>(std::string const& text) {
    return text;
}

template <>
bool Parse<bool>(std::string const& text) {
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    throw std::invalid_argument("Failed to parse the string into a boolean: " + text);
}

template <>
unsigned char Parse<unsigned char>(std::string const& text) {
    constexpr unsigned char Maximum = std::numeric_limits<unsigned char>::max();
    unsigned long long const value = ParseUnsigned(text);
    if (value > Maximum) ThrowOutOfIntegerRange(std::to_string(value), 0, Maximum);
    return static_cast<unsigned char>(value);
}

template <>
std::int32_t Parse<std::int32_t>(std::string const& text) {
    return ParseInteger<std::int32_t>(text);
}

template <>
std::int64_t Parse<std::int64_t>(std::string const& text) {
    return ParseInteger<std::int64_t>(text);
}

template <>
std::uint32_t Parse<std::uint32_t>(std::string const& text) {
    return ParseInteger<std::uint32_t>(text);
}

template <>
double Parse<double>(std::string const& text) {
    auto const value = ParseWhole<double>(text, "a number");
    if (!std::isfinite(value)) throw std::invalid_argument("Failed to parse the string into a number: " + text);
    return value;
}

}  // namespace qel::object
