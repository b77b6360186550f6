#include "calibration/json_document.hpp"

#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"
#include "whole_file.hpp"

namespace qel::host::calibration {
namespace {

using qel::test::MessageOf;
using testing::HasSubstr;
using testing::StartsWith;

std::string ErrorIn(std::string const& text, std::function<void(JsonDocument::Cursor const&)> const& action) {
    return MessageOf<Error>([&] {
        JsonDocument const document("f.json", text);
        action(document.GetRoot());
    });
}

TEST(JsonDocument, RefusesWhatIsNoJsonWithItsPlace) {
    struct Case {
        std::string text, error;
    };
    Case const cases[] = {
        {"", "f.json:1:1: not valid JSON: incomplete JSON"},
        {"{\"a\": 1,\n  \"b\": x}", "f.json:2:8: not valid JSON: syntax error"},
        {"{\"a\": 1", "f.json:1:8: not valid JSON: incomplete JSON"},
        {"{\"a\": nan}", "f.json:1:7: not valid JSON: syntax error"},
        {"[1]\n[2]", "f.json:2:1: nothing may follow the value"},
        {"[[[[[[[[[1]]]]]]]]]", "f.json:1:9: more than 8 objects or arrays within one another"},
    };
    for (Case const& c : cases) EXPECT_EQ(ErrorIn(c.text, [](auto const&) {}), c.error) << c.text;
    EXPECT_EQ(ErrorIn("[[[[[[[[1]]]]]]]]", [](auto const&) {}), "nothing was thrown");
    EXPECT_EQ(ErrorIn(" [1] \n", [](auto const&) {}), "nothing was thrown");
    EXPECT_THAT(ErrorIn(std::string(100000, '['), [](auto const&) {}), StartsWith("f.json:1:9: more than 8"));
}

TEST(JsonDocument, TellsWhereAValueIsWrong) {
    constexpr char Text[] =
        "{\n  \"a\": [1, \"}]\\\"{\", [2.5, -7]],\n  \"b\" : {\"c\": true, \"d\\n\":null},\"e\":\"x\" }";
    struct Case {
        char const* name;
        std::function<void(JsonDocument::Cursor const&)> action;
        char const* error;
    };
    Case const cases[] = {
        {"root", [](auto const& r) { r.GetNumber(0, 1); }, "f.json:1:1: expected a number, not an object"},
        {"missing", [](auto const& r) { r.GetMember("z"); }, "f.json:1:1: the member \"z\" is missing"},
        {"missing below", [](auto const& r) { r.GetMember("b").GetMember("z"); },
         "f.json:3:9: b: the member \"z\" is missing"},
        {"array", [](auto const& r) { r.GetMember("a").GetMember("z"); },
         "f.json:2:8: a: expected an object, not an array"},
        {"length", [](auto const& r) { r.GetMember("a").GetElements(2, 2); },
         "f.json:2:8: a: expected 2 elements, not 3"},
        {"lengths", [](auto const& r) { r.GetMember("a").GetElements(4, 9); },
         "f.json:2:8: a: expected 4 to 9 elements, not 3"},
        {"element", [](auto const& r) { r.GetMember("a").GetElements(3, 3)[1].GetNumber(0, 1); },
         "f.json:2:12: a[1]: expected a number, not a text"},
        {"deep", [](auto const& r) { r.GetMember("a").GetElements(3, 3)[2].GetElements(2, 2)[1].GetNumber(0, 1); },
         "f.json:2:27: a[2][1]: expected a number from 0 to 1, not -7"},
        {"fraction", [](auto const& r) { r.GetMember("a").GetElements(3, 3)[2].GetElements(2, 2)[0].GetInteger(0, 9); },
         "f.json:2:22: a[2][0]: expected a whole number, not 2.5"},
        {"boolean", [](auto const& r) { r.GetMember("b").GetMember("c").GetText(9); },
         "f.json:3:15: b.c: expected a text, not a boolean"},
        {"escaped name", [](auto const& r) { r.GetMember("b").GetMember("d\n").GetElements(0, 1); },
         "f.json:3:27: b.d?: expected an array, not null"},
        {"long", [](auto const& r) { r.GetMember("e").GetText(0); },
         "f.json:3:37: e: expected a text of at most 0 bytes"},
        {"unknown",
         [](auto const& r) {
             r.RequireMembersAmong({"a", "b"});
         },
         "f.json:3:37: e: no such member is known; there are \"a\", \"b\""},
        {"no object", [](auto const& r) { r.GetMember("e").RequireMembersAmong({"a"}); },
         "f.json:3:37: e: expected an object, not a text"},
    };
    for (Case const& c : cases) EXPECT_EQ(ErrorIn(Text, c.action), c.error) << c.name;
}

TEST(JsonDocument, PlacesAMemberThatIsGivenTwiceAtTheOneThatCounts) {
    EXPECT_EQ(ErrorIn("{\"a\": 1, \"a\": true}", [](auto const& r) { r.GetMember("a").GetNumber(0, 9); }),
              "f.json:1:15: a: expected a number, not a boolean");
}

TEST(JsonDocument, GivesValuesWithinTheirBounds) {
    JsonDocument const document("f.json", R"({"n": 2, "x": -0.5, "t": "abc", "l": []})");
    JsonDocument::Cursor const root = document.GetRoot();
    EXPECT_EQ(root.GetMember("n").GetInteger(2, 2), 2);
    EXPECT_EQ(root.GetMember("n").GetNumber(2, 3), 2);
    EXPECT_EQ(root.GetMember("x").GetNumber(-0.5, 0), -0.5);
    EXPECT_EQ(root.GetMember("t").GetText(3), "abc");
    EXPECT_TRUE(root.GetMember("l").GetElements(0, 5).empty());
    EXPECT_TRUE(root.HasMember("n"));
    EXPECT_FALSE(root.HasMember("m"));
    EXPECT_FALSE(root.GetMember("n").HasMember("m"));
}

TEST(JsonDocument, ReadsFilesOfABoundedSize) {
    qel::test::TemporaryDirectory const directory;
    std::string const path = (directory.GetPath() / "f.json").string();
    ReplaceFile(path, "[1]" + std::string(JsonDocument::MaximumSize - 3, ' '));
    EXPECT_NO_THROW(JsonDocument::Read(path));
    ReplaceFile(path, "[1]" + std::string(JsonDocument::MaximumSize - 2, ' '));
    EXPECT_EQ(MessageOf<Error>([&] { JsonDocument::Read(path); }),
              "cannot read '" + path + "': it is larger than 1048576 bytes");
    EXPECT_EQ(MessageOf<Error>([] { JsonDocument::Read("/no/such.json"); }),
              "cannot read '/no/such.json': No such file or directory");
    EXPECT_THAT(MessageOf<Error>([&] { JsonDocument::Read(directory.GetPath().string()); }),
                HasSubstr("Is a directory"));
}

}  // namespace
}  // namespace qel::host::calibration
