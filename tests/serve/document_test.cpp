#include "document.hpp"

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "read_json.hpp"
#include "support/message_of.hpp"

namespace qel::serve {
namespace {

using test::MessageOf;

boost::json::object Parse(std::string const& text) { return ReadJson(text).as_object(); }

TEST(MergePatch, DoesWhatTheRulesSay) {
    struct Case {
        char const* document;
        char const* patch;
        char const* merged;
    };
    // The examples of RFC 7396, as far as both are objects.
    Case const cases[] = {
        {R"({"a":"b"})", R"({"a":"c"})", R"({"a":"c"})"},
        {R"({"a":"b"})", R"({"b":"c"})", R"({"a":"b","b":"c"})"},
        {R"({"a":"b"})", R"({"a":null})", R"({})"},
        {R"({"a":"b","b":"c"})", R"({"a":null})", R"({"b":"c"})"},
        {R"({"a":["b"]})", R"({"a":"c"})", R"({"a":"c"})"},
        {R"({"a":"c"})", R"({"a":["b"]})", R"({"a":["b"]})"},
        {R"({"a":{"b":"c"}})", R"({"a":{"b":"d","c":null}})", R"({"a":{"b":"d"}})"},
        {R"({"a":[{"b":"c"}]})", R"({"a":[1]})", R"({"a":[1]})"},
        {R"({"e":null})", R"({"a":1})", R"({"e":null,"a":1})"},
        {R"({})", R"({"a":{"bb":{"ccc":null}}})", R"({"a":{"bb":{}}})"},
        {R"({"a":1})", R"({"a":{"b":null,"c":[null]}})", R"({"a":{"c":[null]}})"},
        {R"({"a":1,"b":2,"c":3})", R"({"a":null,"d":4,"b":5})", R"({"b":5,"c":3,"d":4})"},
    };
    for (Case const& c : cases) {
        auto document = Parse(c.document);
        MergePatch(document, Parse(c.patch));
        EXPECT_EQ(boost::json::serialize(document), c.merged) << c.document << " with " << c.patch;
    }
}

TEST(FormatDocument, IsReadBackAsItWas) {
    auto const document =
        Parse(R"({"streams":{"gate":{"names":["a","b"],"x":0.1,"y":5.0,"z":{}}},"":"\n\"","n":null})");
    std::string const text = FormatDocument(document);
    EXPECT_EQ(text, R"({
  "streams": {
    "gate": {
      "names": ["a","b"],
      "x": 0.1,
      "y": 5.0,
      "z": {}
    }
  },
  "": "\n\"",
  "n": null
}
)");
    EXPECT_EQ(ParseDocument(text), document);
}

TEST(FormatDocument, RefusesWhatIsTooLong) {
    boost::json::object document{{"a", std::string(MaximumDocumentSize, 'x')}};
    EXPECT_EQ(MessageOf<Refused>([&] { FormatDocument(document); }),
              "the configuration would be larger than 8388608 bytes");
}

TEST(ParseDocument, TellsLineAndColumn) {
    EXPECT_EQ(MessageOf<Refused>([] { ParseDocument("{\n  \"a\": 1,\n  b\n}"); }), "line 3, column 3: syntax error");
    EXPECT_EQ(MessageOf<Refused>([] { ParseDocument("{\n"); }), "line 2, column 1: the document ends too early");
    EXPECT_EQ(MessageOf<Refused>([] { ParseDocument("[]"); }), "line 1, column 1: expected an object, found a list");
    EXPECT_EQ(MessageOf<Refused>([] { ParseDocument(std::string(MaximumDocumentSize + 1, ' ')); }),
              "is larger than 8388608 bytes");
    EXPECT_THAT(
        MessageOf<Refused>([] {
            ParseDocument(R"({"a":)" + std::string(MaximumNesting, '[') + std::string(MaximumNesting, ']') + "}");
        }),
        testing::HasSubstr("nested more than 16 deep"));
}

TEST(CheckPatch, FindsWhatNoFileCouldHold) {
    auto patch = Parse(R"({"a":{"b":[1,"x"]}})");
    EXPECT_TRUE(CheckPatch(patch).empty());
    patch["a"].as_object()["b"].as_array()[1] = boost::json::string("a\0b", 3);
    patch["c"] = -std::numeric_limits<double>::infinity();
    patch[boost::json::string("\0", 1)] = 1;
    EXPECT_EQ(CheckPatch(patch), (std::vector<Fault>{{"a.b[1]", "holds the character U+0000"},
                                                     {"c", "is no finite number"},
                                                     {"", "has a member with the character U+0000 in its name"}}));
    boost::json::value deep = 1;
    for (std::size_t i = 0; i < MaximumNesting; ++i) deep = boost::json::array{deep};
    EXPECT_EQ(CheckPatch({{"a", deep}}).size(), 1U);
    EXPECT_TRUE(CheckPatch({{"a", deep.at(0)}}).empty());
}

}  // namespace
}  // namespace qel::serve
