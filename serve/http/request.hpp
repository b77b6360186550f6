#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qel::serve::http {

/// A request as it has come; its head is complete before its body is.
struct Request {
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    /// In capitals: "GET".
    std::string method{};
    /// The segments of the path, decoded: {"api", "streams"}; "/" is {""}. None is "." or "..".
    std::vector<std::string> path{};
    /// Decoded, in the order of the request.
    Pairs query{};
    /// Names in lower case, in the order of the request.
    Pairs headers{};
    std::string body{};
    /// The address that it comes from; empty where nobody knows.
    std::string client{};
    /// Major and minor version, as 11 or 10.
    unsigned int version = 11;
    bool keepAlive = true;
    /// What the parts in braces of the route's pattern stand for.
    std::map<std::string, std::string, std::less<>> parameters{};

    /// The first header of a name in lower case.
    std::optional<std::string_view> GetHeader(std::string_view name) const;
    /// The first value of a name in the query.
    std::optional<std::string_view> GetQuery(std::string_view name) const;
    /// What the path's part of this name stands for; throws std::out_of_range for one that the route does not have.
    std::string const& GetParameter(std::string_view name) const;
    /// The media type of the body, in lower case and without its parameters; empty for none.
    std::string GetMediaType() const;
    /// The value of a cookie; empty for none.
    std::string_view GetCookie(std::string_view name) const;
};

/// Fills path and query from a request's target ("/api/streams?x=1", or the same behind "http://host").
/// Returns what is wrong with it, as one sentence; empty when nothing is.
std::string ParseTarget(std::string_view target, Request& request);

/// Whether two texts are the same, capitals of ASCII letters not being told apart.
bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept;

std::string ToLower(std::string_view text);

/// Without blanks and tabs at both ends.
std::string_view Trim(std::string_view text) noexcept;

}  // namespace qel::serve::http
