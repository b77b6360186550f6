#pragma once

#include <functional>
#include <string>

#include "http/guard.hpp"
#include "http/problem.hpp"
#include "http/router.hpp"

namespace qel::serve::http {

/// What a server is for: routes, and who may ask for them. Any thread.
class Site {
public:
    /// Told of each answer: the pattern of its route, "" where there was none, the method and the status.
    using Observe = std::function<void(std::string const& pattern, std::string const& method, unsigned int status)>;

    /// Both outlive the site; the routes are complete.
    Site(Router const& router, Guard& guard, Observe observe = {});

    /// What is to be done with a request whose head has come.
    struct Plan {
        /// Null where the answer is there already.
        Route const* route = nullptr;
        Response answer{};
    };

    /// Looks at the head; refuses what must not or cannot be answered before its body is read. Fills the parameters.
    Plan Receive(Request& request) const noexcept;
    /// Answers a whole request.
    Response Answer(Route const& route, Request const& request) const noexcept;
    /// Tells the observer.
    void Report(Route const* route, std::string const& method, unsigned int status) const noexcept;

private:
    Plan Check(Request& request) const;

    Router const& router_;
    Guard& guard_;
    Observe observe_;
};

}  // namespace qel::serve::http
