#include <cstdio>
#include <ctime>

#include <boost/json.hpp>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

#include "api/routes.hpp"
#include "catalogue.hpp"
#include "text.hpp"

namespace qel::serve::api {
namespace {

namespace json = boost::json;

/// "2026-11-21T12:00:00Z".
std::string FormatTime(std::chrono::system_clock::time_point time) {
    std::time_t const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

json::value Describe(Services const& services) {
    auto const reason = services.store.GetSafeModeReason();
    std::chrono::duration<double> const uptime = std::chrono::system_clock::now() - services.started;
    return {{"version", services.version},
            {"started", FormatTime(services.started)},
            {"uptime_seconds", uptime.count()},
            {"safe_mode", reason ? json::value(host::ToValidUtf8(*reason)) : json::value(nullptr)},
            {"token_required", services.guard.NeedsToken()}};
}

http::Response TellMetrics(Services const& services) {
    if (services.updateMetrics) services.updateMetrics();
    http::Response response;
    response.contentType = "text/plain; version=0.0.4; charset=utf-8";
    response.body = prometheus::TextSerializer().Serialize(services.metrics.Collect());
    return response;
}

}  // namespace

std::string MakeAlgorithmList(host::Runtime& runtime) {
    json::array list;
    for (host::AlgorithmDescription const& description : host::DescribeAlgorithms(runtime)) {
        json::object& object = list.emplace_back(json::object()).get_object();
        object["type_name"] = host::ToValidUtf8(description.typeName);
        object["name"] = host::ToValidUtf8(host::GetShortName(description.typeName));
        object["kind"] = description.kind;
        object["colour_formats"] = json::value_from(description.colourFormats);
        object["file"] = host::ToValidUtf8(description.file);
        object["properties"] = description.properties;
        if (!description.problem.empty()) object["problem"] = host::ToValidUtf8(description.problem);
    }
    return json::serialize(json::object{{"algorithms", std::move(list)}}) + "\n";
}

void AddInformationRoutes(http::Router& router, Services const& services) {
    using Work = http::Route::Work;
    using http::Request;
    router.Add({.method = "GET", .pattern = "/api/algorithms", .answer = [text = services.algorithms](Request const&) {
                    return http::MakeJsonText(text);
                }});
    router.Add({.method = "GET", .pattern = "/api/info", .answer = [services](Request const&) {
                    return http::MakeJson(Describe(services));
                }});
    router.Add({.method = "GET",
                .pattern = "/api/openapi.json",
                .answer = [](Request const&) { return http::MakeJsonText(std::string(GetOpenApi())); },
                .open = true});
    router.Add({.method = "GET", .pattern = "/metrics", .answer = [services](Request const&) {
                    return TellMetrics(services);
                }});
    // Whoever asks these wants to know whether the server itself goes on: nothing else may hold them up.
    for (auto const& [pattern, state] : {std::pair{"/live", "live"}, {"/ready", "ready"}}) {
        router.Add({.method = "GET",
                    .pattern = pattern,
                    .answer =
                        [state = state](Request const&) {
                            return http::MakeJson({{"status", state}});
                        },
                    .work = Work::Here,
                    .open = true});
    }
    http::Assets const& assets = services.assets;
    router.Add({.method = "GET",
                .pattern = "/",
                .answer = [&assets](Request const& request) { return assets.Get(request, ""); },
                .open = true});
    router.SetFallback(
        {.method = "GET",
         .pattern = "/{path...}",
         .answer = [&assets](Request const& request) { return assets.Get(request, request.GetParameter("path")); },
         .open = true});
}

}  // namespace qel::serve::api
