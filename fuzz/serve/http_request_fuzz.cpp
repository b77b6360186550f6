// What a client may send: however its bytes are cut, the same requests are read of them; each is answered or refused
// with a problem, and nothing that a client says breaks out of the head of an answer. The first byte tells how they are
// cut.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json.hpp>

#include "check.hpp"
#include "http/request_reader.hpp"
#include "http/site.hpp"

namespace {

using namespace qel::serve::http;
using qel::fuzz::Check;

/// Routes that give back what they are told.
Router MakeRouter() {
    Router router;
    router.Add({.method = "GET", .pattern = "/api/streams/{id}", .answer = [](Request const& request) {
                    return MakeJson(boost::json::value(request.GetParameter("id")));
                }});
    router.Add({.method = "GET", .pattern = "/api/config/{path...}", .answer = [](Request const& request) {
                    return MakeJson(boost::json::value(request.GetParameter("path")));
                }});
    router.Add({.method = "POST",
                .pattern = "/api/streams",
                .answer = [](Request const& request) -> Response { throw Problem(409, "no: " + request.body); },
                .bodyTypes = {"application/json"}});
    return router;
}

/// The bytes of an answer, checked.
std::string Format(Response const& response, Request const& request) {
    std::string head = FormatHead(response, request.version, request.keepAlive);
    Check(response.status >= 200 && response.status < 600, "an answer has no status");
    Check(head.find("\r\n\r\n") == head.size() - 4, "the head of an answer ends before its end");
    if (response.status >= 400) {
        Check(response.contentType == "application/problem+json", "a refusal is no problem");
        boost::json::parse(response.body);
    }
    // The time may go on between two answers.
    auto const date = head.find("Date: ");
    return head.erase(date, head.find("\r\n", date) - date) + response.body;
}

/// The answers to all that has come, whose bytes are read in pieces of this size.
std::string Talk(std::string_view bytes, std::size_t piece) {
    static Router const router = MakeRouter();
    // Their own each time, so that no wrong token counts for another talk.
    Guard guard("0123456789abcdef"), open("");
    Site const sites[] = {Site(router, open), Site(router, guard)};
    using State = RequestReader::State;
    Limits const limits{.maxHead = 512, .maxTarget = 200, .maxBody = 100};
    std::string answers;
    RequestReader reader(limits, "127.0.0.1");
    while (true) {
        while (reader.GetState() != State::Done && reader.GetState() != State::Failed && !bytes.empty()) {
            reader.Put(bytes.substr(0, piece));
            bytes.remove_prefix(std::min(piece, bytes.size()));
        }
        if (reader.GetState() == State::Failed) {
            // How the bytes are cut decides which fault is met first, and whether it is met before the time is up.
            (void)Format(reader.GetProblem().ToResponse(), {});
            return answers;
        }
        if (reader.GetState() != State::Done) return answers;
        Request& request = reader.GetRequest();
        Check(request.body.size() <= limits.maxBody, "a body is larger than it may be");
        for (std::string const& segment : request.path) {
            Check(segment != ".." && segment != "." && segment.find('\0') == std::string::npos, "a path leads astray");
        }
        bool const wantsToken = request.GetHeader("x-token").has_value();
        Site::Plan plan = sites[wantsToken ? 1 : 0].Receive(request);
        Response const response =
            plan.route != nullptr ? sites[0].Answer(*plan.route, request) : std::move(plan.answer);
        bool const mayPass = !wantsToken || request.GetHeader("authorization").has_value();
        Check(plan.route == nullptr || mayPass, "a request without a token is answered");
        answers += Format(response, request);
        reader.Next();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size == 0) return 0;
    std::string_view const bytes(reinterpret_cast<char const*>(data) + 1, size - 1);
    std::string const whole = Talk(bytes, bytes.size() + 1);
    std::string const cut = Talk(bytes, 1 + data[0] % 64);
    Check(whole == cut, "which requests are answered depends on how their bytes are cut");
    return 0;
}
