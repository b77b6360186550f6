#include "http/response.hpp"

#include <cstdio>
#include <ctime>
#include <sstream>

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/write.hpp>

#include "json_text.hpp"

namespace qel::serve::http {
namespace {

namespace beast = boost::beast::http;

/// As headers have it: "Sun, 06 Nov 1994 08:49:37 GMT".
std::string FormatNow() {
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    static char const* const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static char const* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    char rest[40], text[64];
    std::strftime(rest, sizeof rest, "%Y %H:%M:%S GMT", &parts);
    std::snprintf(text, sizeof text, "%s, %02d %s %s", days[parts.tm_wday], parts.tm_mday, months[parts.tm_mon], rest);
    return text;
}

/// Nothing that came from elsewhere runs, is shown or is asked for, and nobody shows this elsewhere.
constexpr char ContentSecurityPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
    "font-src 'self'; manifest-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'";

bool HasBody(unsigned int status) noexcept { return status >= 200 && status != 204 && status != 304; }

}  // namespace

Response MakeJson(boost::json::value const& value, unsigned int status) {
    return MakeJsonText(host::SerializeJson(value) + "\n", status);
}

Response MakeJsonText(std::string text, unsigned int status) {
    Response response;
    response.status = status;
    response.contentType = "application/json";
    response.body = std::move(text);
    return response;
}

std::string GetReason(unsigned int status) {
    if (status == 421) return "Misdirected Request";
    if (status == 422) return "Unprocessable Content";
    auto const known = beast::int_to_status(status);
    return known == beast::status::unknown ? "" : std::string(beast::obsolete_reason(known));
}

bool IsChunked(Response const& response, unsigned int version) noexcept {
    return response.stream && !response.streamSize && version >= 11;
}

std::string FormatHead(Response const& response, unsigned int version, bool keepAlive) {
    beast::response<beast::empty_body> message;
    message.version(version >= 11 ? 11 : 10);
    message.result(response.status);
    message.reason(GetReason(response.status));
    message.set(beast::field::date, FormatNow());
    message.set(beast::field::cache_control, "no-store");
    message.set("X-Content-Type-Options", "nosniff");
    message.set("Referrer-Policy", "no-referrer");
    message.set("Content-Security-Policy", ContentSecurityPolicy);
    message.set("Cross-Origin-Opener-Policy", "same-origin");
    message.set("Cross-Origin-Resource-Policy", "same-origin");
    for (auto const& [name, value] : response.headers) message.set(name, value);
    if (!response.contentType.empty()) message.set(beast::field::content_type, response.contentType);
    if (IsChunked(response, version)) {
        message.chunked(true);
    } else if (response.stream) {
        if (response.streamSize) message.content_length(*response.streamSize);
    } else if (HasBody(response.status)) {
        message.content_length(response.body.size());
    }
    message.keep_alive(keepAlive);
    std::ostringstream text;
    text << message.base();
    return text.str();
}

}  // namespace qel::serve::http
