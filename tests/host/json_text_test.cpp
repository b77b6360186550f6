#include "json_text.hpp"

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace qel::host {
namespace {

TEST(FormatJson, WritesValuesAsAPersonDoes) {
    struct Case {
        char const* json;
        char const* text;
    };
    constexpr Case Cases[] = {
        {"\"a \\\"b\\\"\"", "a \"b\""},
        {"2.5", "2.5"},
        {"3.0", "3"},
        {"1e30", "1e+30"},
        {"-7", "-7"},
        {"true", "true"},
        {"[\"a\",2.5]", "a, 2.5"},
        {"null", "null"},
        {"[]", ""},
    };
    for (Case const& c : Cases) EXPECT_EQ(FormatJson(boost::json::parse(c.json)), c.text);
}

TEST(SerializeJson, WritesOneLineWithNumbersAsPeopleWriteThem) {
    for (char const* const text : {R"({"a":{},"b":[],"c":[{"d":null},true],"e":"{"})", "6.0", "0.5", "-7", "1e+300",
                                   "18446744073709551615", "0.30000000000000004", R"("quote \" and line\n")"}) {
        EXPECT_EQ(SerializeJson(boost::json::parse(text)), text);
    }
}

TEST(SerializeJson, IsReadBackAsTheSameValue) {
    boost::json::value const value = boost::json::parse(R"({"a":[1,1.0,-0.0,5e-324,1.7976931348623157e308]})");
    EXPECT_EQ(boost::json::parse(SerializeJson(value)), value);
}

}  // namespace
}  // namespace qel::host
