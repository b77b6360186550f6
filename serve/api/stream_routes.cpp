#include <algorithm>
#include <memory>
#include <mutex>

#include <boost/json/array.hpp>

#include "api/routes.hpp"

namespace qel::serve::api {
namespace {

namespace json = boost::json;

/// Makes additions and removals one after the other: each looks first what there is.
struct Editor {
    Store& store;
    Streams streams;
    std::mutex mutex{};

    bool Has(std::string_view id) const {
        auto const specs = store.GetStreams();
        return std::any_of(specs.begin(), specs.end(), [id](StreamSpec const& spec) { return spec.id == id; });
    }

    json::value Describe(std::string const& id) const {
        auto const status = streams.find(id);
        return status ? ToJson(*status) : json::object{{"id", id}};
    }

    http::Response Add(http::Request const& request) {
        json::object stream = ParseObject(request.body);
        json::value const* const given = stream.if_contains("id");
        if (given == nullptr || !given->is_string() || given->get_string().empty()) {
            throw Refused(std::vector<Fault>{{"id", "is missing: letters, digits, '_' and '-', at most 64"}});
        }
        std::string const id(given->get_string());
        stream.erase("id");
        std::lock_guard const lock(mutex);
        if (Has(id)) throw http::Problem(409, "there is a stream '" + id + "' already; PATCH /api/config changes it");
        store.Patch({{"streams", json::object{{id, std::move(stream)}}}});
        http::Response response = http::MakeJson(Describe(id), 201);
        // The store has taken it: it holds nothing that a path would have to escape.
        response.headers.emplace_back("Location", "/api/streams/" + id);
        return response;
    }

    http::Response Remove(http::Request const& request) {
        std::string const& id = request.GetParameter("id");
        std::lock_guard const lock(mutex);
        if (!Has(id)) throw http::Problem(404, "there is no stream '" + id + "'");
        store.Patch({{"streams", json::object{{id, nullptr}}}});
        return MakeEmpty();
    }
};

}  // namespace

void AddStreamRoutes(http::Router& router, Services const& services) {
    std::shared_ptr<Editor> const editor(new Editor{services.store, services.streams});
    router.Add({.method = "GET", .pattern = "/api/streams", .answer = [services](http::Request const&) {
                    json::array list;
                    for (StreamStatus const& status : services.streams.list()) list.push_back(ToJson(status));
                    return http::MakeJson({{"streams", std::move(list)}});
                }});
    router.Add({.method = "POST",
                .pattern = "/api/streams",
                .answer = [editor](http::Request const& request) { return editor->Add(request); },
                .bodyTypes = {"application/json"}});
    router.Add(
        {.method = "GET", .pattern = "/api/streams/{id}", .answer = [editor, services](http::Request const& request) {
             return http::MakeJson(editor->Describe(GetStreamId(request, services)));
         }});
    router.Add({.method = "DELETE", .pattern = "/api/streams/{id}", .answer = [editor](http::Request const& request) {
                    return editor->Remove(request);
                }});
}

}  // namespace qel::serve::api
