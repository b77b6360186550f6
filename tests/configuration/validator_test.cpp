#include "qel/configuration/validator.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::configuration {
namespace {

using test::MessageOf;

template <class T>
std::string ErrorOf(Validator const& validator, T value) {
    return MessageOf<std::out_of_range>([&] { validator.Check<T>(value, "a.b"); });
}

constexpr char const* Nothing = "nothing was thrown";

TEST(Validator, AllowsEverythingUnlessToldOtherwise) {
    Validator const validator;
    EXPECT_TRUE(validator.IsEmpty());
    EXPECT_EQ(ErrorOf(validator, std::numeric_limits<double>::max()), Nothing);
    EXPECT_EQ(ErrorOf(validator, std::string()), Nothing);
    EXPECT_EQ(ErrorOf(validator, false), Nothing);
    EXPECT_FALSE(validator.GetMinimum() || validator.GetMaximum() || validator.GetPattern());
}

TEST(Validator, AllowsARangeWithBothItsEnds) {
    Validator const validator = Range{-1, 10};
    EXPECT_EQ(ErrorOf(validator, -1), Nothing);
    EXPECT_EQ(ErrorOf(validator, 10), Nothing);
    EXPECT_EQ(ErrorOf(validator, -2), "a.b: the value -2 is out of the range -1 to 10");
    EXPECT_EQ(ErrorOf(validator, 11), "a.b: the value 11 is out of the range -1 to 10");
    EXPECT_EQ(ErrorOf(validator, 10.000001), "a.b: the value 10.000001 is out of the range -1 to 10");
    EXPECT_EQ(ErrorOf(validator, std::nextafter(10.0, 11.0)),
              "a.b: the value 10.000000000000002 is out of the range -1 to 10");
}

TEST(Validator, AllowsHalfARange) {
    EXPECT_EQ(ErrorOf(Validator::Minimum(0.5), 0.25), "a.b: the value 0.25 is below the minimum 0.5");
    EXPECT_EQ(ErrorOf(Validator::Minimum(0.5), 1e300), Nothing);
    EXPECT_EQ(ErrorOf(Validator::Maximum(5), 6), "a.b: the value 6 is above the maximum 5");
    EXPECT_EQ(ErrorOf(Validator::Maximum(5), -6), Nothing);
}

TEST(Validator, AllowsASingleNumber) {
    EXPECT_EQ(ErrorOf(Validator(Range{5, 5}), 5), Nothing);
    EXPECT_EQ(ErrorOf(Validator(Range{5, 5}), 4), "a.b: the value 4 is out of the range 5 to 5");
}

TEST(Validator, KeepsLargeIntegersApart) {
    constexpr std::int64_t Limit = std::numeric_limits<std::int64_t>::max() - 1;
    Validator const validator = Range<std::int64_t>{0, Limit};
    EXPECT_EQ(ErrorOf(validator, Limit), Nothing);
    EXPECT_EQ(ErrorOf(validator, Limit + 1),
              "a.b: the value 9223372036854775807 is out of the range 0 to 9223372036854775806");
}

TEST(Validator, NeverAllowsANumberThatIsNotFinite) {
    EXPECT_EQ(ErrorOf(Validator(), std::nan("")), "a.b: the value nan is not a finite number");
    EXPECT_EQ(ErrorOf(Validator(Range{0, 1}), std::nan("")), "a.b: the value nan is not a finite number");
    EXPECT_EQ(ErrorOf(Validator(), std::numeric_limits<double>::infinity()),
              "a.b: the value inf is not a finite number");
    EXPECT_EQ(ErrorOf(Validator(), -std::numeric_limits<double>::infinity()),
              "a.b: the value -inf is not a finite number");
}

TEST(Validator, RefusesLimitsThatAreNone) {
    EXPECT_EQ(MessageOf<std::invalid_argument>([] {
                  Validator(Range{2.5, 1.0});
              }),
              "The minimum of a validator, 2.5, is above its maximum, 1");
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Validator::Minimum(std::nan("")); }),
              "A limit of a validator must be a number");
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Validator::Maximum(std::nan("")); }),
              "A limit of a validator must be a number");
}

TEST(Validator, AllowsTextsInWhichThePatternIsFound) {
    Validator const somewhere = Validator::Pattern("[0-9]+");
    EXPECT_EQ(somewhere.GetPattern(), "[0-9]+");
    EXPECT_EQ(ErrorOf<std::string>(somewhere, "a1b"), Nothing);
    EXPECT_EQ(ErrorOf<std::string>(somewhere, "ab"), "a.b: the value 'ab' does not match the pattern '[0-9]+'");
    Validator const whole = Validator::Pattern("^[0-9]+$");
    EXPECT_EQ(ErrorOf<std::string>(whole, "12"), Nothing);
    EXPECT_EQ(ErrorOf<std::string>(whole, "a12"), "a.b: the value 'a12' does not match the pattern '^[0-9]+$'");
    EXPECT_EQ(ErrorOf<std::string>(whole, ""), "a.b: the value '' does not match the pattern '^[0-9]+$'");
}

TEST(Validator, RefusesAPatternThatIsNone) {
    EXPECT_EQ(MessageOf<std::invalid_argument>([] {
                  Validator::Pattern("(a");
              }).find("The pattern '(a' is not a regular expression: "),
              0U);
}

TEST(Validator, GivesUpOnATextThatTakesTooLongToMatch) {
    EXPECT_EQ(ErrorOf(Validator::Pattern("^(a|a)*$"), std::string(64, 'a') + "b").find("a.b: the value 'aaaa"), 0U);
    // Deep recursion for each character would crash here.
    EXPECT_EQ(ErrorOf(Validator::Pattern("^(a|b)*$"), std::string(1'000'000, 'a')).find("threw"), std::string::npos);
}

TEST(Validator, KnowsWhatKindOfValuesItIsFor) {
    Validator const range = Range{0, 1};
    Validator const pattern = Validator::Pattern("a");
    EXPECT_TRUE(Validator().IsFor<bool>() && Validator().IsFor<std::string>() && Validator().IsFor<double>());
    EXPECT_TRUE(range.IsFor<double>() && range.IsFor<unsigned char>());
    EXPECT_FALSE(range.IsFor<std::string>() || range.IsFor<bool>());
    EXPECT_TRUE(pattern.IsFor<std::string>());
    EXPECT_FALSE(pattern.IsFor<double>() || pattern.IsFor<bool>());
}

}  // namespace
}  // namespace qel::configuration
