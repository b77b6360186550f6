#include "http/router.hpp"

#include <gtest/gtest.h>

#include "http/problem.hpp"

namespace qel::serve::http {
namespace {

Router MakeRouter() {
    Router router;
    for (auto const& [method, pattern] : {std::pair{"GET", "/"},
                                          {"GET", "/api/streams"},
                                          {"POST", "/api/streams"},
                                          {"GET", "/api/streams/{id}"},
                                          {"DELETE", "/api/streams/{id}"},
                                          {"GET", "/api/config"},
                                          {"GET", "/api/config/{path...}"}}) {
        router.Add({.method = method, .pattern = pattern, .answer = [](Request const&) { return Response(); }});
    }
    return router;
}

Request MakeRequest(char const* method, char const* target) {
    Request request;
    request.method = method;
    EXPECT_EQ(ParseTarget(target, request), "");
    return request;
}

TEST(Router, FindsTheRouteAndWhatItsPartsStandFor) {
    struct Case {
        char const *method, *target, *pattern, *name, *value;
    };
    constexpr Case cases[] = {
        {"GET", "/api/streams/gate", "/api/streams/{id}", "id", "gate"},
        {"HEAD", "/api/streams/gate", "/api/streams/{id}", "id", "gate"},
        {"DELETE", "/api/streams/a%2Fb", "/api/streams/{id}", "id", "a/b"},
        {"GET", "/api/config/a", "/api/config/{path...}", "path", "a"},
        {"GET", "/api/config/a/b/c", "/api/config/{path...}", "path", "a/b/c"},
        {"GET", "/api/config/", "/api/config/{path...}", "path", ""},
    };
    Router const router = MakeRouter();
    for (Case const& c : cases) {
        SCOPED_TRACE(c.target);
        Request request = MakeRequest(c.method, c.target);
        Route const* const route = router.Find(request);
        ASSERT_NE(route, nullptr);
        EXPECT_EQ(route->pattern, c.pattern);
        EXPECT_EQ(request.GetParameter(c.name), c.value);
    }
}

TEST(Router, TellsAnUnknownPathFromAnUnknownMethod) {
    Router const router = MakeRouter();
    for (char const* const target : {"/api", "/api/streams/", "/api/streams/a/b", "/api/configuration", "/x"}) {
        SCOPED_TRACE(target);
        Request request = MakeRequest("GET", target);
        try {
            router.Find(request);
            FAIL();
        } catch (Problem const& problem) {
            EXPECT_EQ(problem.GetStatus(), 404U);
        }
    }
    Request request = MakeRequest("PUT", "/api/streams");
    try {
        router.Find(request);
        FAIL();
    } catch (Problem const& problem) {
        EXPECT_EQ(problem.GetStatus(), 405U);
        Response const response = problem.ToResponse();
        EXPECT_EQ(response.headers, (Request::Pairs{{"Allow", "GET, HEAD, OPTIONS, POST"}}));
    }
    Request options = MakeRequest("OPTIONS", "/api/streams/gate");
    EXPECT_EQ(router.Find(options), nullptr);
    EXPECT_EQ(router.GetAllowed(options), "DELETE, GET, HEAD, OPTIONS");
}

TEST(Router, TakesARouteOnce) {
    Router router = MakeRouter();
    EXPECT_THROW(router.Add({.method = "GET", .pattern = "/", .answer = {}}), std::logic_error);
}

}  // namespace
}  // namespace qel::serve::http
