#include <algorithm>
#include <mutex>

#include <boost/json/array.hpp>
#include <boost/json/value_from.hpp>

#include "api/routes.hpp"

namespace qel::serve::api {
namespace {

/// "streams/gate/settings" as "streams.gate.settings".
std::string GetPath(http::Request const& request) {
    auto const found = request.parameters.find("path");
    if (found == request.parameters.end()) return {};
    std::string path = found->second;
    std::replace(path.begin(), path.end(), '/', '.');
    if (path.ends_with('.')) path.pop_back();
    return path;
}

http::Response Tell(std::optional<std::string> text, std::string const& path) {
    if (!text) throw http::Problem(404, "there is nothing at '" + path + "' in the configuration");
    return http::MakeJsonText(std::move(*text));
}

http::Response Change(Store& store, http::Request const& request) {
    return http::MakeJson({{"changed", boost::json::value_from(store.Patch(ParseObject(request.body)))}});
}

}  // namespace

void AddConfigurationRoutes(http::Router& router, Services const& services) {
    Store& store = services.store;
    for (char const* const pattern : {"/api/config", "/api/config/{path...}"}) {
        router.Add({.method = "GET", .pattern = pattern, .answer = [&store](http::Request const& request) {
                        std::string const path = GetPath(request);
                        return Tell(store.GetData(path), path);
                    }});
    }
    for (char const* const pattern : {"/api/schema", "/api/schema/{path...}"}) {
        router.Add({.method = "GET", .pattern = pattern, .answer = [&store](http::Request const& request) {
                        std::string const path = GetPath(request);
                        http::Response response = Tell(store.GetSchema(path), path);
                        response.contentType = "application/schema+json";
                        return response;
                    }});
    }
    router.Add({.method = "GET", .pattern = "/api/document", .answer = [&store](http::Request const&) {
                    return http::MakeJson(store.GetDocument());
                }});
    router.Add({.method = "PATCH",
                .pattern = "/api/config",
                .answer = [&store](http::Request const& request) { return Change(store, request); },
                .bodyTypes = {"application/merge-patch+json", "application/json"}});
}

}  // namespace qel::serve::api
