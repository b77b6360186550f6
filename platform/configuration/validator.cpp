#include "qel/configuration/validator.hpp"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include <boost/regex.hpp>

#include "number_text.hpp"

namespace qel::configuration {

using detail::NumberText;

// Boost's expressions do not call themselves for each character, and give up on those that would take too long.
struct Validator::Expression {
    std::string text;
    boost::regex expression;
};

namespace {

[[noreturn]] void Refuse(std::string const& path, std::string const& value, std::string const& reason) {
    throw std::out_of_range(path + ": the value " + value + " " + reason);
}

void CheckNumber(long double number, std::string const& path, std::optional<long double> const& minimum,
                 std::optional<long double> const& maximum) {
    if (!std::isfinite(number)) Refuse(path, NumberText(number), "is not a finite number");
    if (!(minimum && number < *minimum) && !(maximum && number > *maximum)) return;
    if (minimum && maximum) {
        Refuse(path, NumberText(number), "is out of the range " + NumberText(*minimum) + " to " + NumberText(*maximum));
    }
    Refuse(path, NumberText(number),
           minimum ? "is below the minimum " + NumberText(*minimum) : "is above the maximum " + NumberText(*maximum));
}

}  // namespace

Validator::Validator(Bound minimum, Bound maximum) : minimum_(minimum), maximum_(maximum) {
    if ((minimum && std::isnan(*minimum)) || (maximum && std::isnan(*maximum))) {
        throw std::invalid_argument("A limit of a validator must be a number");
    }
    if (minimum && maximum && *minimum > *maximum) {
        throw std::invalid_argument("The minimum of a validator, " + NumberText(*minimum) + ", is above its maximum, " +
                                    NumberText(*maximum));
    }
}

Validator Validator::Pattern(std::string pattern) {
    Validator validator;
    try {
        boost::regex expression(pattern, boost::regex::ECMAScript);
        validator.pattern_ = std::make_shared<Expression const>(Expression{std::move(pattern), std::move(expression)});
    } catch (boost::regex_error const& error) {
        throw std::invalid_argument("The pattern '" + pattern + "' is not a regular expression: " + error.what());
    }
    return validator;
}

std::optional<std::string> Validator::GetPattern() const {
    return pattern_ ? std::optional(pattern_->text) : std::nullopt;
}

template <object::PrimitiveValue T>
void Validator::Check(T const& value, std::string const& path) const {
    if constexpr (object::Number<T>) {
        CheckNumber(static_cast<long double>(value), path, minimum_, maximum_);
    } else if constexpr (std::is_same_v<T, std::string>) {
        if (!pattern_) return;
        bool found = false;
        try {
            found = boost::regex_search(value, pattern_->expression);
        } catch (std::runtime_error const&) {
            Refuse(path, "'" + value + "'", "takes too long to match with the pattern '" + pattern_->text + "'");
        }
        if (!found) Refuse(path, "'" + value + "'", "does not match the pattern '" + pattern_->text + "'");
    }
}

template QEL_CONFIGURATION_EXPORT void Validator::Check(std::string const&, std::string const&) const;
template QEL_CONFIGURATION_EXPORT void Validator::Check(bool const&, std::string const&) const;
template QEL_CONFIGURATION_EXPORT void Validator::Check(unsigned char const&, std::string const&) const;
template QEL_CONFIGURATION_EXPORT void Validator::Check(std::int32_t const&, std::string const&) const;
template QEL_CONFIGURATION_EXPORT void Validator::Check(std::int64_t const&, std::string const&) const;
template QEL_CONFIGURATION_EXPORT void Validator::Check(std::uint32_t const&, std::string const&) const;
template QEL_CONFIGURATION_EXPORT void Validator::Check(double const&, std::string const&) const;

}  // namespace qel::configuration
