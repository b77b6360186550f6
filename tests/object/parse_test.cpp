#include "qel/object/parse.hpp"

#include <clocale>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::object {
namespace {

using test::MessageOf;

TEST(ParseUInt8, ReadsAnUnsignedDecimalNumber) {
    struct Case {
        char const* text;
        unsigned int value;
    };
    constexpr Case Cases[] = {{"0", 0},
                              {"42", 42},
                              {"255", 255},
                              {" \t\n7", 7},
                              {"+7", 7},
                              {"-0", 0},
                              {"7abc", 7},
                              {"7.9", 7},
                              {"1e2", 1},
                              {"007", 7},
                              {"0x10", 0},
                              {"12 13", 12},
                              {"000000000000000000000000255", 255},
                              {"-18446744073709551615", 1}};
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Parse<unsigned char>(c.text), c.value);
    }
}

TEST(ParseUInt8, RefusesATextWithoutDigits) {
    for (std::string const text : {"abc", "", " ", "-", "+", "- 1", "x7", ".5"}) {
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<unsigned char>(text); }),
                  "Failed to parse the string into an unsigned integer: " + text);
    }
}

TEST(ParseUInt8, RefusesANumberPast64Bits) {
    for (std::string const text : {"99999999999999999999", "18446744073709551616", "-18446744073709551616"}) {
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<unsigned char>(text); }),
                  "The string was out of the range of an unsigned integer: " + text);
    }
}

TEST(ParseUInt8, RefusesANumberPast255) {
    struct Case {
        char const* text;
        char const* number;
    };
    constexpr Case Cases[] = {{"256", "256"},
                              {"1000x", "1000"},
                              {"-1", "18446744073709551615"},
                              {"18446744073709551615", "18446744073709551615"}};
    for (Case const& c : Cases) {
        EXPECT_EQ(MessageOf<std::out_of_range>([&] { Parse<unsigned char>(c.text); }),
                  std::string("The parsed value '") + c.number + "' was out of range of the integer type: 0 to 255");
    }
}

TEST(ParseString, GivesTheTextItself) { EXPECT_EQ(Parse<std::string>(" a 1"), " a 1"); }

TEST(ParseBool, TakesFourTexts) {
    EXPECT_TRUE(Parse<bool>("true"));
    EXPECT_TRUE(Parse<bool>("1"));
    EXPECT_FALSE(Parse<bool>("false"));
    EXPECT_FALSE(Parse<bool>("0"));
    for (std::string const text : {"", "True", "yes", "2", "true "}) {
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<bool>(text); }),
                  "Failed to parse the string into a boolean: " + text);
    }
}

TEST(ParseInteger, ReachesFromTheLeastToTheGreatest) {
    EXPECT_EQ(Parse<std::int32_t>("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Parse<std::int32_t>("+2147483647"), 2147483647);
    EXPECT_EQ(Parse<std::uint32_t>("4294967295"), 4294967295U);
    EXPECT_EQ(Parse<std::int64_t>("9223372036854775807"), 9223372036854775807);
    EXPECT_EQ(Parse<std::int64_t>("-9223372036854775808"), -9223372036854775807 - 1);
}

TEST(ParseInteger, RefusesANumberThatTheTypeCannotHold) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Parse<std::int32_t>("2147483648"); }),
              "The parsed value '2147483648' was out of range of the integer type: -2147483648 to 2147483647");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Parse<std::int32_t>("-2147483649"); }),
              "The parsed value '-2147483649' was out of range of the integer type: -2147483648 to 2147483647");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Parse<std::uint32_t>("-1"); }),
              "The parsed value '-1' was out of range of the integer type: 0 to 4294967295");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Parse<std::uint32_t>("4294967296"); }),
              "The parsed value '4294967296' was out of range of the integer type: 0 to 4294967295");
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Parse<std::int64_t>("9223372036854775808"); }),
              "The string was out of the range of an integer: 9223372036854775808");
}

TEST(ParseInteger, WantsTheWholeText) {
    for (std::string const text : {"", " 1", "1 ", "1x", "1.0", "+", "-", "+-1", "++1", "0x1"}) {
        std::string const message = "Failed to parse the string into an integer: " + text;
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<std::int32_t>(text); }), message);
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<std::int64_t>(text); }), message);
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<std::uint32_t>(text); }), message);
    }
}

TEST(ParseDouble, ReadsADecimalNumber) {
    EXPECT_EQ(Parse<double>("2.5"), 2.5);
    EXPECT_EQ(Parse<double>("-.5"), -0.5);
    EXPECT_EQ(Parse<double>("+1e3"), 1000.0);
    EXPECT_EQ(Parse<double>("7"), 7.0);
}

TEST(ParseDouble, WantsTheWholeTextAndAFiniteNumber) {
    for (std::string const text : {"", "2,5", "2.5x", " 2.5", "nan", "inf", "-infinity", "0x1p3", "+-1"}) {
        EXPECT_EQ(MessageOf<std::invalid_argument>([&] { Parse<double>(text); }),
                  "Failed to parse the string into a number: " + text);
    }
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Parse<double>("1e999"); }),
              "The string was out of the range of a number: 1e999");
}

TEST(ParseDouble, DoesNotHeedTheLocale) {
    std::string const former = std::setlocale(LC_NUMERIC, nullptr);
    // Where the machine has no such locale, the plain one remains and the test still holds.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_EQ(Parse<double>("2.5"), 2.5);
    std::setlocale(LC_NUMERIC, former.c_str());
}

}  // namespace
}  // namespace qel::object
