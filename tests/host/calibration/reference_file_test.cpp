#include "calibration/reference_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"

namespace qel::host::calibration {
namespace {

using testing::StartsWith;

TEST(ReferenceFile, HoldsWhatAPersonHasMarked) {
    Problem const problem = ParseProblem("r.json", R"({
        "size": [768, 576],
        "ground": [{"from": [1, 2], "to": [3.5, 4], "metres": 5.25, "name": "kerb"}],
        "vertical": [{"foot": [10, 20], "top": [10, 5], "metres": 1.8, "tolerance": 0.05}],
        "click_error": 0.5,
        "fixed": {"roll": 0}})");
    EXPECT_EQ(problem.size, (Size{768, 576}));
    ASSERT_EQ(problem.references.size(), 2U);
    Reference const& kerb = problem.references[0];
    EXPECT_EQ(kerb.kind, Reference::Kind::Ground);
    EXPECT_EQ(kerb.from, (Pixel{1, 2}));
    EXPECT_EQ(kerb.to, (Pixel{3.5, 4}));
    EXPECT_EQ(kerb.metres, 5.25);
    EXPECT_EQ(kerb.tolerance, 0);
    EXPECT_EQ(kerb.name, "kerb");
    Reference const& person = problem.references[1];
    EXPECT_EQ(person.kind, Reference::Kind::Vertical);
    EXPECT_EQ(person.from, (Pixel{10, 20}));
    EXPECT_EQ(person.to, (Pixel{10, 5}));
    EXPECT_EQ(person.tolerance, 0.05);
    EXPECT_EQ(problem.clickError, 0.5);
    EXPECT_EQ(problem.fixed[1], 0);
    EXPECT_FALSE(problem.fixed[0] || problem.fixed[2] || problem.fixed[3]);
}

TEST(ReferenceFile, NeedsNoMoreThanASize) {
    Problem const problem = ParseProblem("r.json", R"({"size": [768, 576]})");
    EXPECT_TRUE(problem.references.empty());
    EXPECT_EQ(problem.clickError, 1);
}

TEST(ReferenceFile, IsRefusedWithThePlaceOfWhatIsWrong) {
    struct Case {
        char const* text;
        char const* error;
    };
    constexpr Case Cases[] = {
        {"{}", "r.json:1:1: the member \"size\" is missing"},
        {R"({"size": [768]})", "r.json:1:10: size: expected 2 elements, not 1"},
        {R"({"size": [768, 0]})", "r.json:1:16: size[1]: expected a number from 1 to 65536, not 0"},
        {R"({"size": [768, 1.5]})", "r.json:1:16: size[1]: expected a whole number, not 1.5"},
        {R"({"size": [8, 8], "ground": {}})", "r.json:1:28: ground: expected an array, not an object"},
        {R"({"size": [8, 8], "ground": [{"from": [1, 2], "metres": 1}]})",
         "r.json:1:29: ground[0]: the member \"to\" is missing"},
        {R"({"size": [8, 8], "ground": [{"from": [1, 2], "to": [1], "metres": 1}]})",
         "r.json:1:52: ground[0].to: expected 2 elements, not 1"},
        {R"({"size": [8, 8], "ground": [{"from": [1, 2], "to": [1, 3], "metres": 0}]})",
         "r.json:1:70: ground[0].metres: expected a number from 0.001 to 10000, not 0"},
        {R"({"size": [8, 8], "vertical": [{"from": [1, 2], "to": [1, 3], "metres": 1}]})",
         "r.json:1:40: vertical[0].from: no such member is known; there are \"foot\""},
        {R"({"size": [8, 8], "fixed": {"fov": 3}})", "r.json:1:35: fixed.fov: no such member is known"},
        {R"({"size": [8, 8], "fixed": {"tilt": 300}})",
         "r.json:1:36: fixed.tilt: expected a number from -90 to 180, not 300"},
        {R"({"size": [8, 8], "click_error": 0})", "r.json:1:33: click_error: expected a number from 0.001 to 1000"},
    };
    for (Case const& c : Cases) {
        try {
            ParseProblem("r.json", c.text);
            ADD_FAILURE() << c.text;
        } catch (Error const& error) {
            EXPECT_THAT(error.what(), StartsWith(c.error));
        }
    }
}

}  // namespace
}  // namespace qel::host::calibration
