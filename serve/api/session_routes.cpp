#include "api/routes.hpp"

namespace qel::serve::api {

void AddSessionRoutes(http::Router& router, Services const& services) {
    http::Guard& guard = services.guard;
    router.Add({.method = "POST",
                .pattern = "/api/session",
                .answer =
                    [&guard](http::Request const& request) {
                        boost::json::object const body = ParseObject(request.body);
                        boost::json::value const* const token = body.if_contains("token");
                        if (token == nullptr || !token->is_string())
                            throw Refused(std::vector<Fault>{{"token", "is no text"}});
                        http::Response response = MakeEmpty();
                        response.headers.emplace_back("Set-Cookie", guard.SignIn(request, token->get_string()));
                        return response;
                    },
                .open = true,
                .bodyTypes = {"application/json"}});
    router.Add({.method = "DELETE",
                .pattern = "/api/session",
                .answer =
                    [&guard](http::Request const& request) {
                        http::Response response = MakeEmpty();
                        response.headers.emplace_back("Set-Cookie", guard.SignOut(request));
                        return response;
                    },
                .open = true});
}

}  // namespace qel::serve::api
