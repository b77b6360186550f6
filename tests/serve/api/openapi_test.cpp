#include <map>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <prometheus/registry.h>

#include "api/services.hpp"
#include "serve/api/service_fixture.hpp"
#include "store.hpp"

namespace qel::serve {
namespace {

namespace json = boost::json;
using http::Answer;
using http::MakeRequest;

json::object ReadDocument() { return json::parse(api::GetOpenApi()).as_object(); }

/// What a JSON pointer within the document leads to; or the value itself, where it is no reference.
json::value const& Resolve(json::object const& document, json::value const& value) {
    auto const* const object = value.if_object();
    auto const* const reference = object ? object->if_contains("$ref") : nullptr;
    if (reference == nullptr) return value;
    std::string const pointer(reference->as_string().subview(1));
    return document.at("components").at("responses").at(pointer.substr(pointer.rfind('/') + 1));
}

/// "GET /api/streams/{id}" of everything that the document describes.
std::map<std::string, json::object> ListOperations(json::object const& document) {
    std::map<std::string, json::object> operations;
    for (auto const& [path, methods] : document.at("paths").as_object()) {
        for (auto const& [method, operation] : methods.as_object()) {
            std::string name(method);
            for (char& letter : name) letter = static_cast<char>(std::toupper(letter));
            operations.emplace(name + " " + std::string(path), operation.as_object());
        }
    }
    return operations;
}

using OpenApi = ServiceTest;

TEST_F(OpenApi, DescribesWhatTheServerAnswersAndNothingElse) {
    Store store(runtime_, folder_ / "config.json");
    EventBus bus;
    prometheus::Registry metrics;
    http::Guard guard("");
    http::Assets const assets{boost::filesystem::path()};
    http::Router router;
    api::AddRoutes(router, {.store = store,
                            .streams = {},
                            .bus = bus,
                            .metrics = metrics,
                            .guard = guard,
                            .assets = assets,
                            .folder = {},
                            .algorithms = {},
                            .version = {}});
    std::set<std::string> answered{"GET /{path}"}, open{"GET /{path}"};
    for (http::Route const& route : router.GetRoutes()) {
        std::string pattern = route.pattern;
        if (auto const dots = pattern.find("...}"); dots != std::string::npos) pattern.erase(dots, 3);
        answered.insert(route.method + " " + pattern);
        if (route.open) open.insert(route.method + " " + pattern);
    }
    std::set<std::string> described, describedAsOpen;
    for (auto const& [name, operation] : ListOperations(ReadDocument())) {
        described.insert(name);
        if (operation.contains("security")) describedAsOpen.insert(name);
    }
    EXPECT_EQ(described, answered);
    EXPECT_EQ(describedAsOpen, open);
}

TEST_F(OpenApi, IsAnsweredAsItStandsInTheProgram) {
    Begin();
    EXPECT_EQ(Parse(Get("/api/openapi.json")), json::value(ReadDocument()));
}

/// Calls everything that the document describes.
class OpenApiCalls : public ServiceTest {
protected:
    /// Checks that the document foresees an answer: its status and its media type.
    void ExpectForeseen(json::object const& operation, Answer const& answer) const {
        auto const& responses = operation.at("responses").as_object();
        auto const* const found = responses.if_contains(std::to_string(answer.status));
        ASSERT_NE(found, nullptr) << "the status " << answer.status << " is not foreseen: " << answer.body;
        auto const* const content = Resolve(document_, *found).as_object().if_contains("content");
        std::string type = answer.Get("content-type");
        type = type.substr(0, type.find(';'));
        if (content == nullptr) {
            EXPECT_EQ(type, "");
        } else if (!content->as_object().contains("*/*")) {
            EXPECT_TRUE(content->as_object().contains(type)) << type;
        }
    }

    static std::string GetTarget(std::string path) {
        for (auto const& [part, value] : {std::pair{"/api/config/{path}", "/api/config/streams.gate"},
                                          {"/api/schema/{path}", "/api/schema/streams.gate"},
                                          {"{id}", "gate"},
                                          {"{path}", "index.html"}}) {
            if (auto const at = path.find(part); at != std::string::npos)
                path.replace(at, std::string(part).size(), value);
        }
        return path;
    }

    /// The examples of a body, by name; one of no name where it takes none.
    static std::map<std::string, std::string> GetBodies(json::object const& operation) {
        auto const* const body = operation.if_contains("requestBody");
        if (body == nullptr) return {{"", ""}};
        std::map<std::string, std::string> bodies;
        for (auto const& [name, example] : body->at("content").at("application/json").at("examples").as_object()) {
            bodies[std::string(name)] = json::serialize(example.at("value"));
        }
        return bodies;
    }

    Answer Call(std::string const& name, std::string const& body, std::string const& extra = "") const {
        auto const blank = name.find(' ');
        std::string const headers = extra + (body.empty() ? "" : "Content-Type: application/json\r\n");
        http::Client client(GetPort());
        client.Send(MakeRequest(name.substr(0, blank), GetTarget(name.substr(blank + 1)), headers, body));
        // Endless answers show what they are in their heads.
        bool const isEndless = name.ends_with("/mjpeg") || name.ends_with("/events");
        return client.Receive(!isEndless);
    }

    json::object const document_ = ReadDocument();
    std::map<std::string, json::object> const operations_ = ListOperations(document_);
};

TEST_F(OpenApiCalls, RightOnesAreAnsweredAsDescribed) {
    Begin();
    Send("PATCH", "/api/config", R"({"streams": {"old": {"source": "gate.mkv", "algorithms": ["threshold"]}}})");
    for (auto const& [name, operation] : operations_) {
        // Last of all: the others need the stream.
        if (name == "DELETE /api/streams/{id}") continue;
        for (auto const& [example, body] : GetBodies(operation)) {
            SCOPED_TRACE(name + " " + example);
            // Of the installed algorithms, which are not those of this test, and of a stream that is there already.
            bool const isForeign = name == "PATCH /api/config" || name == "POST /api/streams";
            Answer const answer = Call(name, body);
            if (example == "wrong" || isForeign) {
                EXPECT_GE(answer.status, 400U) << answer.body;
            } else {
                EXPECT_LT(answer.status, 300U) << answer.body;
            }
            ExpectForeseen(operation, answer);
        }
    }
    for (char const* const body :
         {R"({"streams": {"gate": {"loop": false}}})", R"({"streams": {"gate": {"loop": null}}})"}) {
        ExpectForeseen(operations_.at("PATCH /api/config"), Send("PATCH", "/api/config", body));
    }
    Answer const added =
        Send("POST", "/api/streams", R"({"id": "door", "source": "gate.mkv", "algorithms": ["threshold"]})");
    EXPECT_EQ(added.status, 201U);
    ExpectForeseen(operations_.at("POST /api/streams"), added);
    Answer const removed = Call("DELETE /api/streams/{id}", "");
    EXPECT_EQ(removed.status, 204U);
    ExpectForeseen(operations_.at("DELETE /api/streams/{id}"), removed);
}

TEST_F(OpenApiCalls, WrongOnesAreProblemsAsDescribed) {
    Begin();
    for (auto const& [name, operation] : operations_) {
        SCOPED_TRACE(name);
        std::string const method = name.substr(0, name.find(' '));
        std::string const target = GetTarget(name.substr(name.find(' ') + 1));
        // From a page of another site.
        Answer const foreign = Call(name, GetBodies(operation).begin()->second, "Origin: http://elsewhere.example\r\n");
        ExpectProblem(foreign, 403);
        ExpectForeseen(operation, foreign);
        // Malformed.
        Answer const malformed = http::Ask(GetPort(), MakeRequest(method, target + "/%zz"));
        ExpectProblem(malformed, 400);
        ExpectForeseen(operation, malformed);
        // By a method that no path has; paths of files are not there for others than GET.
        Answer const method405 = http::Ask(GetPort(), MakeRequest("BREW", target));
        ExpectProblem(method405, name == "GET /{path}" ? 404 : 405);
        if (!operation.contains("requestBody")) continue;
        for (auto const& [type, body, status] : {std::tuple{"text/plain", "{}", 415U},
                                                 {"application/json", "{", 400U},
                                                 {"application/json", "[]", 400U}}) {
            Answer const wrong =
                http::Ask(GetPort(), MakeRequest(method, target, std::string("Content-Type: ") + type + "\r\n", body));
            ExpectProblem(wrong, status);
            ExpectForeseen(operation, wrong);
        }
        Answer const large = http::Ask(
            GetPort(), MakeRequest(method, target, "Content-Type: application/json\r\nContent-Length: 1048577\r\n"));
        ExpectProblem(large, 413);
        ExpectForeseen(operation, large);
    }
    for (char const* const name :
         {"GET /api/streams/{id}", "DELETE /api/streams/{id}", "GET /api/streams/{id}/mjpeg",
          "GET /api/streams/{id}/frame.jpg", "GET /api/config/{path}", "GET /api/schema/{path}"}) {
        std::string target = std::string(name).substr(std::string(name).find('/'));
        for (char const* const part : {"{id}", "{path}"}) {
            if (auto const at = target.find(part); at != std::string::npos)
                target.replace(at, std::string(part).size(), "no");
        }
        Answer const missing =
            http::Ask(GetPort(), MakeRequest(std::string(name).substr(0, std::string(name).find(' ')), target));
        ExpectProblem(missing, 404);
        ExpectForeseen(operations_.at(name), missing);
    }
}

TEST_F(OpenApiCalls, WithoutTheTokenAreProblemsAsDescribed) {
    Begin("fedcba9876543210");
    for (auto const& [name, operation] : operations_) {
        SCOPED_TRACE(name);
        if (operation.contains("security") && name != "POST /api/session") continue;
        Answer const answer = Call(name, GetBodies(operation).begin()->second);
        ExpectProblem(answer, 401);
        ExpectForeseen(operation, answer);
    }
}

}  // namespace
}  // namespace qel::serve
