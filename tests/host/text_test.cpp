#include "text.hpp"

#include <gtest/gtest.h>

namespace qel::host {
namespace {

using namespace std::chrono_literals;

TEST(ToValidUtf8, KeepsWellFormedTextAndReplacesEveryOtherByte) {
    struct Case {
        char const* name;
        std::string text, valid;
    };
    std::string const r = "\xEF\xBF\xBD";
    Case const cases[] = {
        {"empty", "", ""},
        {"ASCII, control characters and a NUL", std::string("a\n\x7F\0b", 5), std::string("a\n\x7F\0b", 5)},
        {"two, three and four bytes", "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xA5",
         "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xA5"},
        {"first and last of each length", "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
         "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"lone byte of Latin-1", "caf\xE9.avi", "caf" + r + ".avi"},
        {"continuation without a lead", "\x80\xBF", r + r},
        {"cut at the end", "a\xE2\x82", "a" + r + r},
        {"overlong forms", "\xC0\xAF\xC1\xBF\xE0\x9F\xBF\xF0\x8F\xBF\xBF", r + r + r + r + r + r + r + r + r + r + r},
        {"surrogate", "\xED\xA0\x80", r + r + r},
        {"beyond the last code point", "\xF4\x90\x80\x80\xF5\xFF", r + r + r + r + r + r},
        {"lead, then ASCII", "\xC3(", r + "("},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(ToValidUtf8(c.text), c.valid);
    }
}

TEST(FormatTime, WritesHoursOnlyWhenThereAreAny) {
    struct Case {
        std::chrono::nanoseconds time;
        int decimals;
        char const* text;
    };
    constexpr Case Cases[] = {
        {0ns, 0, "0:00"},       {0ns, 1, "0:00.0"},           {999999999ns, 0, "0:00"},  {999999999ns, 3, "0:00.999"},
        {12300ms, 1, "0:12.3"}, {59999ms, 1, "0:59.9"},       {60s, 0, "1:00"},          {3599s, 0, "59:59"},
        {3600s, 0, "1:00:00"},  {3725040ms, 2, "1:02:05.04"}, {360000s, 0, "100:00:00"},
    };
    for (Case const& c : Cases) EXPECT_EQ(FormatTime(c.time, c.decimals), c.text);
}

TEST(FindNearest, TakesTheNameWithTheFewestMistakes) {
    std::vector<std::string> const known{"threshold", "minimum_area", "adaptation", "enabled"};
    EXPECT_EQ(FindNearest("treshold", known), "threshold");
    EXPECT_EQ(FindNearest("THRESHOLD", known), "threshold");
    EXPECT_EQ(FindNearest("min_area", known), "minimum_area");
    EXPECT_EQ(FindNearest("adpatation", known), "adaptation");
    EXPECT_EQ(FindNearest("enable", known), "enabled");
    EXPECT_EQ(FindNearest("enabled", known), "enabled");
}

TEST(FindNearest, CountsASwapOfNeighboursAsOneMistake) {
    // "ab" is one swap from "ba" and one replacement from "aa"; two swaps of letters would cost "ba" two mistakes.
    EXPECT_EQ(FindNearest("ab", {"ba", "aa"}), "ba");
    EXPECT_EQ(FindNearest("abcd", {"bacdx", "badc"}), "bacdx");
}

TEST(FindNearest, TakesTheFirstOfEqualsAndNothingOfNothing) {
    EXPECT_EQ(FindNearest("x", {"a", "b"}), "a");
    EXPECT_EQ(FindNearest("", {"bb", "a"}), "a");
    EXPECT_EQ(FindNearest("x", {}), "");
}

TEST(Join, PutsACommaBetween) {
    EXPECT_EQ(Join({}), "");
    EXPECT_EQ(Join({"one"}), "one");
    EXPECT_EQ(Join({"one", "two", ""}), "one, two, ");
}

}  // namespace
}  // namespace qel::host
