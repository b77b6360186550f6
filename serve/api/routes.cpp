#include "api/routes.hpp"

#include <algorithm>

#include <boost/json/parse.hpp>

#include "api/openapi.hpp"
#include "qel/serialize/check_json.hpp"
#include "read_json.hpp"
#include "supervisor.hpp"
#include "text.hpp"

namespace qel::serve::api {

Streams MakeStreams(Supervisor& supervisor) {
    return {[&supervisor] { return supervisor.GetStatus(); },
            [&supervisor](std::string_view id) { return supervisor.GetStatus(id); },
            [&supervisor](std::string_view id, LookOptions options, std::function<void()> wake) {
                return supervisor.Look(id, options, std::move(wake));
            }};
}

void AddRoutes(http::Router& router, Services const& services) {
    AddConfigurationRoutes(router, services);
    AddStreamRoutes(router, services);
    AddPictureRoutes(router, services);
    AddEventRoutes(router, services);
    AddCalibrationRoutes(router, services);
    AddInformationRoutes(router, services);
    AddSessionRoutes(router, services);
}

std::string_view GetOpenApi() noexcept { return OpenApiFiles[0].text; }

boost::json::object ParseObject(std::string const& body) {
    serialize::CheckJson(body);
    boost::json::value value = ReadJson(body);
    if (!value.is_object()) throw http::Problem(400, "the body is no JSON object");
    return std::move(value.get_object());
}

void RequireQueryAmong(http::Request const& request, std::initializer_list<std::string_view> names) {
    for (auto const& [name, value] : request.query) {
        if (std::find(names.begin(), names.end(), name) != names.end()) continue;
        std::string known = host::Join({names.begin(), names.end()});
        throw http::Problem(400, "the query '" + name + "' means nothing here; known are: " +
                                     (known.empty() ? std::string("none") : std::move(known)));
    }
}

std::string const& GetStreamId(http::Request const& request, Services const& services) {
    std::string const& id = request.GetParameter("id");
    if (!services.streams.find(id)) throw http::Problem(404, "there is no stream '" + id + "'");
    return id;
}

http::Response MakeEmpty() {
    http::Response response;
    response.status = 204;
    return response;
}

}  // namespace qel::serve::api
