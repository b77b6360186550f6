#include "http/problem.hpp"

#include <new>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "qel/serialize/json_error.hpp"

namespace qel::serve::http {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// The answer to whatever a handler throws.
template <class Error>
Response AnswerTo(Error const& error) {
    return ToResponse(std::make_exception_ptr(error));
}

TEST(Problem, IsADocumentOfItsOwnType) {
    Response const answer = Problem(404, "there is no stream \"gate\"").ToResponse();
    EXPECT_EQ(answer.status, 404U);
    EXPECT_EQ(answer.contentType, "application/problem+json");
    EXPECT_THAT(answer.headers, IsEmpty());
    EXPECT_EQ(answer.body,
              R"({"type":"about:blank","title":"Not Found","status":404,"detail":"there is no stream \"gate\""})"
              "\n");
}

TEST(Problem, NamesEachFaultByPlaceAndReason) {
    Problem const problem(422, "two values", {{"a.b", "must be 1 or more"}, {"", "is no map"}});
    EXPECT_EQ(problem.ToResponse().body,
              R"({"type":"about:blank","title":"Unprocessable Content","status":422,"detail":"two values",)"
              R"("faults":[{"path":"a.b","reason":"must be 1 or more"},{"path":"","reason":"is no map"}]})"
              "\n");
}

TEST(Problem, CarriesItsHeaders) {
    Response const answer = AnswerTo(Problem(405, "only GET").With("Allow", "GET").With("Retry-After", "1"));
    EXPECT_THAT(answer.headers, ElementsAre(Pair("Allow", "GET"), Pair("Retry-After", "1")));
}

TEST(Problem, IsWellFormedWhateverBytesTheRequestHad) {
    std::string const body = Problem(422, "no \xFF", {{"\xC3", "\x80 \n"}}).ToResponse().body;
    EXPECT_THAT(body, testing::HasSubstr("\"detail\":\"no \xEF\xBF\xBD\""));
    EXPECT_THAT(body, testing::HasSubstr("{\"path\":\"\xEF\xBF\xBD\",\"reason\":\"\xEF\xBF\xBD \\n\"}"));
}

TEST(Problem, IsMadeOfWhateverAHandlerThrows) {
    struct Case {
        Response answer;
        unsigned int status;
        char const* detail;
    } const cases[] = {
        {AnswerTo(Problem(409, "as it is")), 409, "as it is"},
        {AnswerTo(Refused(std::vector<Fault>{{"a", "one"}, {"b", "two"}})), 422, "a: one (and 1 more)"},
        {AnswerTo(serialize::JsonError(1, 2, "no")), 400,
         "the body is not the JSON it should be: line 1, column 2: no"},
        {AnswerTo(host::UsageError("misused")), 422, "misused"},
        {AnswerTo(host::Error("failed")), 500, "failed"},
        {AnswerTo(std::bad_alloc()), 503, "there is not enough memory for this just now"},
        {AnswerTo(std::runtime_error("anything")), 500, "anything"},
        {AnswerTo(7), 500, "something failed without a reason"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.detail);
        EXPECT_EQ(c.answer.status, c.status);
        EXPECT_THAT(c.answer.body, testing::HasSubstr(std::string("\"detail\":\"") + c.detail + "\""));
    }
    EXPECT_THAT(cases[1].answer.body, testing::HasSubstr(R"("faults":[{"path":"a","reason":"one"},{"path":"b")"));
    EXPECT_THAT(cases[5].answer.headers, ElementsAre(Pair("Retry-After", "5")));
}

}  // namespace
}  // namespace qel::serve::http
