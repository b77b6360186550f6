#include "qel/serialize/check_json.hpp"

#include <string>

#include <gtest/gtest.h>

#include "qel/serialize/json_error.hpp"
#include "qel/serialize/json_input.hpp"
#include "support/message_of.hpp"

namespace qel::serialize {
namespace {

using test::MessageOf;

std::string ErrorOf(std::string const& text) {
    return MessageOf<JsonError>([&] { CheckJson(text); });
}

std::string Nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST(CheckJson, AcceptsObjectsAndLists) {
    for (char const* const text : {"{}", "[]", " \n{\"a\": [1, -2.5e3, true, null, \"\\u00e9\"]} \n", "[[[]]]"}) {
        EXPECT_EQ(ErrorOf(text), "nothing was thrown") << text;
    }
}

TEST(CheckJson, SaysWhereATextStopsBeingJson) {
    struct Case {
        char const* name;
        char const* text;
        std::size_t line, column;
    };
    constexpr Case Cases[] = {
        {"nothing", "", 1, 1},
        {"white space", " \n ", 2, 2},
        {"a number at the top", "7", 1, 1},
        {"not a number", "{\"a\": NaN}", 1, 7},
        {"on the third line", "{\n  \"a\": 1,\n  b: 2}", 3, 3},
        {"a comma too many", "{\"a\": 1,}", 1, 9},
        {"an end too early", "{\"a\": [1", 1, 9},
        {"a second document", "{} {}", 1, 4},
        {"broken UTF-8", "{\"a\": \"\xff\"}", 1, 8},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        try {
            CheckJson(c.text);
            ADD_FAILURE() << "nothing was thrown";
        } catch (JsonError const& error) {
            EXPECT_EQ(error.GetLine(), c.line);
            EXPECT_EQ(error.GetColumn(), c.column) << error.what();
        }
    }
}

TEST(CheckJson, GivesItsReasonInPlainWords) {
    EXPECT_EQ(ErrorOf(""), "line 1, column 1: there is no JSON document");
    EXPECT_EQ(ErrorOf("7"), "line 1, column 1: expected an object or a list");
    EXPECT_EQ(ErrorOf("{} {}"), "line 1, column 4: there is more after the end of the document");
    EXPECT_EQ(ErrorOf("{\"a\": [1"), "line 1, column 9: the document ends too early");
}

TEST(CheckJson, LimitsTheDepth) {
    EXPECT_EQ(ErrorOf(Nested(MaximumDepth)), "nothing was thrown");
    EXPECT_EQ(ErrorOf(Nested(MaximumDepth + 1)), "line 1, column 65: lists and objects are nested more than 64 deep");
    EXPECT_EQ(MessageOf<JsonError>([] { CheckJson("[[[]]]", 2); }),
              "line 1, column 3: lists and objects are nested more than 2 deep");
    EXPECT_NE(ErrorOf(std::string(1'000'000, '[')), "nothing was thrown");
}

TEST(CheckJson, RefusesACharacterThatWouldEndATextEarly) {
    for (char const* const text : {R"({"a": "x\u0000y"})", R"({"x\u0000y": 1})", R"(["\u0000"])"}) {
        EXPECT_NE(ErrorOf(text).find("the character U+0000 cannot stand in a text"), std::string::npos) << text;
    }
    EXPECT_EQ(ErrorOf(R"(["\u0001"])"), "nothing was thrown");
}

TEST(CheckJson, RefusesANoughtThatTheReaderCannotConvert) {
    std::string const far = "a nought with so many decimals or such an exponent cannot be read: write 0";
    for (std::string const& number : {std::string("0e-43"), std::string("-0.0E+99"), std::string("0e999999"),
                                      "0." + std::string(23, '0'), "0." + std::string(60, '0') + "e60"}) {
        EXPECT_TRUE(ErrorOf("{\"a\": " + number + "}").ends_with(far)) << number;
    }
    for (std::string const& number :
         {std::string("0"), std::string("-0"), std::string("0.0"), std::string("0E0"), std::string("0e22"),
          std::string("0e-22"), "0." + std::string(22, '0'), std::string("1e-43"), "0." + std::string(30, '0') + "1"}) {
        EXPECT_EQ(ErrorOf("{\"a\": " + number + "}"), "nothing was thrown") << number;
    }
}

TEST(CheckJson, RefusesNumbersThatNoDoubleHolds) {
    std::string const digits(180, '7');
    for (std::string const& number :
         {std::string("1e309"), "-" + digits + "e200", std::string("1e-400"), "0." + std::string(400, '0') + "1"}) {
        EXPECT_TRUE(ErrorOf("{\"a\": " + number + "}").ends_with("a number is too large or too small for a double"))
            << number;
    }
    for (std::string const& number : {std::string("1.7e308"), std::string("5e-324"), digits + "e100"}) {
        EXPECT_EQ(ErrorOf("{\"a\": " + number + "}"), "nothing was thrown") << number;
    }
}

TEST(JsonInput, OpensAnArchiveOverACheckedText) {
    JsonInput input(R"({"a": 7})");
    int value = 0;
    input.GetArchive()(cereal::make_nvp("a", value));
    EXPECT_EQ(value, 7);
}

TEST(JsonInput, RefusesWhatIsNotJson) {
    EXPECT_EQ(MessageOf<cereal::Exception>([] { JsonInput("7"); }), "line 1, column 1: expected an object or a list");
}

}  // namespace
}  // namespace qel::serialize
