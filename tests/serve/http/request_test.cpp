#include "http/request.hpp"

#include <gtest/gtest.h>

namespace qel::serve::http {
namespace {

using Path = std::vector<std::string>;

TEST(ParseTarget, DecodesThePathAndTheQuery) {
    struct Case {
        char const* target;
        Path path;
        Request::Pairs query;
    };
    Case const cases[] = {
        {"/", {""}, {}},
        {"/api/streams", {"api", "streams"}, {}},
        {"/api/config/", {"api", "config", ""}, {}},
        {"/a%20b/%c3%A9?x=1&y=a+b%26&z", {"a b", "\xc3\xa9"}, {{"x", "1"}, {"y", "a b&"}, {"z", ""}}},
        {"/a%2Fb?", {"a/b"}, {}},
        {"http://localhost:80/api?x=1", {"api"}, {{"x", "1"}}},
        {"http://localhost", {""}, {}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.target);
        Request request;
        EXPECT_EQ(ParseTarget(c.target, request), "");
        EXPECT_EQ(request.path, c.path);
        EXPECT_EQ(request.query, c.query);
    }
}

TEST(ParseTarget, RefusesWhatIsNoPath) {
    for (char const* const target : {"", "api", "*", "/%", "/%4", "/%zz", "/%00", "/a%0ab", "/%ff", "/a#b", "/..",
                                     "/a/../b", "/.", "/%2e%2E/x", "/?x=%", "/?x=%00", "/?%ff=1"}) {
        SCOPED_TRACE(target);
        Request request;
        EXPECT_NE(ParseTarget(target, request), "");
    }
}

TEST(Request, FindsHeadersMediaTypesAndCookies) {
    Request request;
    request.headers = {{"content-type", " Application/JSON ; charset=utf-8"},
                       {"cookie", "a=1; session=two;b = 3"},
                       {"content-type", "text/plain"}};
    EXPECT_EQ(request.GetMediaType(), "application/json");
    EXPECT_EQ(request.GetCookie("session"), "two");
    EXPECT_EQ(request.GetCookie("b"), "3");
    EXPECT_EQ(request.GetCookie("c"), "");
    EXPECT_EQ(request.GetHeader("accept"), std::nullopt);
    EXPECT_EQ(Request().GetMediaType(), "");
    EXPECT_THROW(request.GetParameter("id"), std::out_of_range);
}

}  // namespace
}  // namespace qel::serve::http
