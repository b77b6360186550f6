// Parse for every type, against the C library: which texts are numbers, their values, and which are out of range.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

#include "check.hpp"
#include "qel/object/parse.hpp"

namespace {

using qel::fuzz::Check;
using qel::object::Parse;

enum class Outcome { Value, NoNumber, OutOfRange };

template <class T>
Outcome TryParse(std::string const& text, T& value) {
    try {
        value = Parse<T>(text);
        return Outcome::Value;
    } catch (std::invalid_argument const&) {
        return Outcome::NoNumber;
    } catch (std::out_of_range const&) {
        return Outcome::OutOfRange;
    }
}

/// A whole decimal number with an optional sign, and nothing else.
bool IsWholeNumber(std::string const& text) {
    std::size_t const digits = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
    return digits < text.size() && text.find_first_not_of("0123456789", digits) == std::string::npos;
}

template <class T>
void CheckInteger(std::string const& text) {
    T value{};
    Outcome const outcome = TryParse(text, value);
    if (!IsWholeNumber(text)) return Check(outcome == Outcome::NoNumber, "a text that is no number was taken");
    bool const negative = text[0] == '-';
    errno = 0;
    unsigned long long const magnitude = std::strtoull(text.c_str() + (std::isdigit(text[0]) ? 0 : 1), nullptr, 10);
    bool const past64 = errno == ERANGE;
    auto const limit = static_cast<unsigned long long>(std::numeric_limits<T>::max());
    bool const fits =
        !past64 && (!negative ? magnitude <= limit
                              : magnitude == 0 || (std::numeric_limits<T>::min() != 0 && magnitude <= limit + 1));
    if (!fits) return Check(outcome != Outcome::Value, "a number that does not fit was taken");
    Check(outcome == Outcome::Value, "a number that fits was refused");
    Check(value == static_cast<T>(negative ? 0 - magnitude : magnitude), "another number");
}

void CheckByte(std::string const& text) {
    unsigned char value = 0;
    Outcome const outcome = TryParse(text, value);
    std::optional<unsigned long long> expected;
    bool outOfRange = false;
    try {
        expected = std::stoull(text);
    } catch (std::invalid_argument const&) {
    } catch (std::out_of_range const&) {
        outOfRange = true;
    }
    if (!expected) return Check(outcome == Outcome::NoNumber, outOfRange ? "past 64 bits" : "no number");
    Check(outcome == (*expected <= 255 ? Outcome::Value : Outcome::OutOfRange), "a byte");
    if (*expected <= 255) Check(value == *expected, "another byte");
}

void CheckDouble(std::string const& text) {
    double value = 0;
    Outcome const outcome = TryParse(text, value);
    Check(outcome != Outcome::OutOfRange, "no double is out of range");
    if (outcome != Outcome::Value) return;
    Check(std::isfinite(value), "a double that is not finite");
    char* end = nullptr;
    Check(value == std::strtod(text.c_str(), &end) && *end == '\0', "another double");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    CheckInteger<std::int32_t>(text);
    CheckInteger<std::int64_t>(text);
    CheckInteger<std::uint32_t>(text);
    CheckByte(text);
    CheckDouble(text);
    bool truth = false;
    bool const isTruth = text == "true" || text == "false" || text == "0" || text == "1";
    Check(TryParse(text, truth) == (isTruth ? Outcome::Value : Outcome::NoNumber), "bool");
    Check(Parse<std::string>(text) == text, "a text");
    return 0;
}
