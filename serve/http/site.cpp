#include "http/site.hpp"

#include <algorithm>

#include "text.hpp"

namespace qel::serve::http {
namespace {

/// Where there is no memory for anything else.
Response MakeEmpty() noexcept {
    Response response;
    response.status = 503;
    return response;
}

Response Explain(std::exception_ptr const& error) noexcept {
    try {
        return ToResponse(error);
    } catch (...) {
        return MakeEmpty();
    }
}

void CheckBody(Route const& route, Request const& request) {
    if (route.bodyTypes.empty()) return;
    std::string const type = request.GetMediaType();
    if (std::find(route.bodyTypes.begin(), route.bodyTypes.end(), type) != route.bodyTypes.end()) return;
    std::string const accepted = host::Join(route.bodyTypes);
    throw Problem(415, "the Content-Type has to be one of " + accepted)
        .With(route.method == "PATCH" ? "Accept-Patch" : "Accept-Post", accepted);
}

}  // namespace

Site::Site(Router const& router, Guard& guard, Observe observe)
    : router_(router), guard_(guard), observe_(std::move(observe)) {}

Site::Plan Site::Check(Request& request) const {
    guard_.CheckOrigin(request);
    Route const* const route = router_.Find(request);
    if (route == nullptr) {
        Plan plan;
        plan.answer.status = 204;
        plan.answer.headers.emplace_back("Allow", router_.GetAllowed(request));
        return plan;
    }
    if (!route->open) guard_.CheckToken(request);
    CheckBody(*route, request);
    return {route, {}};
}

Site::Plan Site::Receive(Request& request) const noexcept {
    try {
        return Check(request);
    } catch (...) {
        return {nullptr, Explain(std::current_exception())};
    }
}

Response Site::Answer(Route const& route, Request const& request) const noexcept {
    try {
        return route.answer(request);
    } catch (...) {
        return Explain(std::current_exception());
    }
}

void Site::Report(Route const* route, std::string const& method, unsigned int status) const noexcept {
    try {
        if (observe_) observe_(route == nullptr ? "" : route->pattern, method, status);
    } catch (...) {
        // A count that is lost is no reason to lose a connection.
    }
}

}  // namespace qel::serve::http
