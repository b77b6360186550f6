#include "read_json.hpp"

#include <cmath>
#include <cstring>
#include <random>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "json_text.hpp"

namespace qel::serve {
namespace {

TEST(ReadJson, ReadsEveryKindOfValue) {
    std::string const text =
        R"({"a":[null,true,false,-5,18446744073709551615,0.5,"x\n\u00e4\"",[],{}],"":{"b":{"c":1}},"a":2})";
    EXPECT_EQ(ReadJson(text), boost::json::parse(text));
    std::string const longText(100'000, 'x');
    EXPECT_EQ(ReadJson("[\"" + longText + "\"]").at(0).as_string(), longText);
    EXPECT_EQ(ReadJson("  5.5 ").as_double(), 5.5);
}

TEST(ReadJson, ReadsEveryDoubleBackAsItWasWritten) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100'000; ++i) {
        std::uint64_t const bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        // The parser refuses some of the largest and smallest.
        if (!std::isfinite(number) || std::abs(number) > 1e300 || std::abs(number) < 1e-300) continue;
        std::string const text = host::SerializeJson(boost::json::array{number});
        ASSERT_EQ(ReadJson(text).at(0).to_number<double>(), number) << text;
    }
    EXPECT_EQ(ReadJson("[0.30000000000000004]").at(0).as_double(), 0.1 + 0.2);
}

TEST(ReadJson, RefusesWhatIsNoJson) {
    for (char const* const text : {"", "{", "[1,]", "{} {}", "[1] x", "nul", "[\"\x80\"]", "{\"a\"}"}) {
        EXPECT_THROW(ReadJson(text), boost::system::system_error) << text;
    }
    EXPECT_THROW(ReadJson(std::string(65, '[') + std::string(65, ']')), boost::system::system_error);
    EXPECT_NO_THROW(ReadJson(std::string(64, '[') + std::string(64, ']')));
}

}  // namespace
}  // namespace qel::serve
