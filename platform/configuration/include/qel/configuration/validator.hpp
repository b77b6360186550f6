#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "qel/configuration/export.hpp"
#include "qel/configuration/range.hpp"
#include "qel/object/primitive_value.hpp"

namespace qel::configuration {

/// What values a node allows: numbers from a minimum to a maximum, both inclusive, or texts in which a regular
/// expression (ECMAScript) is found; "^" and "$" tie it to the ends of the text.
///
/// A constant value: any thread may use it. Bounds are kept as long double, which holds every number of a node exactly.
class QEL_CONFIGURATION_EXPORT Validator {
public:
    /// Allows everything.
    Validator() = default;
    /// Allows a range of numbers; throws std::invalid_argument when the minimum is above the maximum or one is no
    /// number.
    template <class T>
    Validator(Range<T> range) : Validator(Bound(range.minimum), Bound(range.maximum)) {}

    static Validator Minimum(long double minimum) { return {Bound(minimum), Bound()}; }  ///< from it on
    static Validator Maximum(long double maximum) { return {Bound(), Bound(maximum)}; }  ///< up to it
    /// Throws std::invalid_argument when the pattern is no regular expression.
    static Validator Pattern(std::string pattern);

    std::optional<long double> const& GetMinimum() const noexcept { return minimum_; }
    std::optional<long double> const& GetMaximum() const noexcept { return maximum_; }
    std::optional<std::string> GetPattern() const;

    /// Whether it allows everything.
    bool IsEmpty() const noexcept { return !minimum_ && !maximum_ && !pattern_; }
    /// Whether values of type T can be checked: limits are for numbers, patterns for texts.
    template <object::PrimitiveValue T>
    bool IsFor() const noexcept {
        return (object::Number<T> || !(minimum_ || maximum_)) && (std::is_same_v<T, std::string> || !pattern_);
    }

    /// Throws std::out_of_range, with the path, the value and what is allowed, for a value that is not. A double must
    /// be finite even without limits.
    template <object::PrimitiveValue T>
    void Check(T const& value, std::string const& path) const;

private:
    using Bound = std::optional<long double>;
    struct Expression;

    Validator(Bound minimum, Bound maximum);

    Bound minimum_;
    Bound maximum_;
    std::shared_ptr<Expression const> pattern_;
};

}  // namespace qel::configuration
