#include "http/router.hpp"

#include <map>
#include <set>
#include <stdexcept>
#include <string_view>

#include "http/problem.hpp"
#include "text.hpp"

namespace qel::serve::http {
namespace {

using Parameters = std::map<std::string, std::string, std::less<>>;

/// What the parts in braces stand for; nothing when the path is another one.
std::optional<Parameters> Match(std::string_view pattern, std::vector<std::string> const& path) {
    Parameters parameters;
    pattern.remove_prefix(1);
    for (std::size_t i = 0;; ++i) {
        auto const slash = pattern.find('/');
        std::string_view const part = pattern.substr(0, slash);
        if (i >= path.size()) return std::nullopt;
        if (part.ends_with("...}")) {
            std::string& rest = parameters[std::string(part.substr(1, part.size() - 5))];
            rest = path[i];
            while (++i < path.size()) rest += "/" + path[i];
            return parameters;
        }
        if (part.starts_with('{')) {
            if (path[i].empty()) return std::nullopt;
            parameters[std::string(part.substr(1, part.size() - 2))] = path[i];
        } else if (part != path[i]) {
            return std::nullopt;
        }
        if (slash == std::string_view::npos) {
            if (i + 1 == path.size()) return parameters;
            return std::nullopt;
        }
        pattern.remove_prefix(slash + 1);
    }
}

}  // namespace

void Router::Add(Route route) {
    for (Route const& other : routes_) {
        if (other.method == route.method && other.pattern == route.pattern) {
            throw std::logic_error("there are two routes " + route.method + " " + route.pattern);
        }
    }
    routes_.push_back(std::move(route));
}

std::string Router::GetAllowed(Request const& request) const {
    std::set<std::string> methods;
    for (Route const& route : routes_) {
        if (!Match(route.pattern, request.path)) continue;
        methods.insert(route.method);
        if (route.method == "GET") methods.insert("HEAD");
    }
    if (methods.empty()) return {};
    methods.insert("OPTIONS");
    return host::Join({methods.begin(), methods.end()});
}

Route const* Router::Find(Request& request) const {
    std::string_view const method = request.method == "HEAD" ? "GET" : std::string_view(request.method);
    for (Route const& route : routes_) {
        if (route.method != method) continue;
        if (auto parameters = Match(route.pattern, request.path)) {
            request.parameters = std::move(*parameters);
            return &route;
        }
    }
    std::string const allowed = GetAllowed(request);
    if (allowed.empty() && fallback_ && fallback_->method == method) {
        request.parameters = *Match(fallback_->pattern, request.path);
        return &*fallback_;
    }
    if (allowed.empty()) throw Problem(404, "there is nothing at this path; /api/openapi.json tells what there is");
    if (method == "OPTIONS") return nullptr;
    throw Problem(405, "this path takes " + allowed).With("Allow", allowed);
}

}  // namespace qel::serve::http
