#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "http/request.hpp"
#include "http/response.hpp"

namespace qel::serve::http {

/// One thing that a server answers.
struct Route {
    /// Where it is answered.
    enum class Work {
        Here,    ///< at once, by whoever reads requests: it must not wait
        Worker,  ///< it may wait for a lock or a disk
        Slow     ///< it may take seconds
    };

    /// "GET" serves HEAD as well.
    std::string method;
    /// "/api/streams/{id}": each part in braces stands for a segment; "{path...}" at the end for all that follow, one
    /// at least, with slashes between them.
    std::string pattern;
    /// Throws whatever ToResponse tells of.
    std::function<Response(Request const&)> answer;
    Work work = Work::Worker;
    /// Whether it needs no token.
    bool open = false;
    /// The media types that it takes a body of; empty where it takes none.
    std::vector<std::string> bodyTypes{};
};

/// Finds the route of a request. Filled once; then any thread.
class Router {
public:
    /// Throws std::logic_error when there is one of this method and pattern.
    void Add(Route route);
    /// What GET and HEAD of paths without a route get; its pattern is "/{path...}".
    void SetFallback(Route route) { fallback_ = std::move(route); }
    std::vector<Route> const& GetRoutes() const noexcept { return routes_; }

    /// Fills the request's parameters. Throws Problem: 404, or 405 with the methods that there are. Null: the request
    /// asks which these are (OPTIONS).
    Route const* Find(Request& request) const;
    /// "GET, HEAD, OPTIONS": what a request's path can be asked for; empty when there is no such path.
    std::string GetAllowed(Request const& request) const;

private:
    std::vector<Route> routes_;
    std::optional<Route> fallback_;
};

}  // namespace qel::serve::http
