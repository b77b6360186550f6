#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "http/request.hpp"

namespace qel::serve::http {

/// Whether two texts are the same, in a time that depends on the length of the second alone.
bool EqualsInConstantTime(std::string_view secret, std::string_view given) noexcept;

/// Reads the token of a file: its first line. Throws host::UsageError when the file cannot be read, when other users
/// can, or when the token is shorter than 16 characters or not of visible ASCII.
std::string ReadToken(std::string const& file);

/// Lets requests pass that come from where they should: from people who know the token, if there is one, and never from
/// a page of another site. Any thread.
class Guard {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// After so many wrong tokens of one address within this time, it is heard no more until the time is over.
    static constexpr std::size_t MaxFailures = 10;
    static constexpr std::chrono::seconds FailureTime{60};
    /// How long a session lasts without a request.
    static constexpr std::chrono::hours SessionTime{12};
    static constexpr std::size_t MaxSessions = 256;

    /// token: empty for none, which is for servers that only this machine reaches.
    explicit Guard(std::string token, Clock clock = std::chrono::steady_clock::now);

    bool NeedsToken() const noexcept { return !token_.empty(); }

    /// Throws Problem 403 for a request that another site's page makes, or that came by a name that is not this
    /// machine's (without a token).
    void CheckOrigin(Request const& request) const;
    /// Throws Problem 401 without a token or a session, 429 after too many wrong ones.
    void CheckToken(Request const& request);

    /// Begins a session and returns the value of the header Set-Cookie. Throws as CheckToken does.
    std::string SignIn(Request const& request, std::string_view token);
    /// Ends the request's session and returns the value of Set-Cookie.
    std::string SignOut(Request const& request);

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Failures {
        Time since;
        std::size_t count = 0;
    };
    struct Session {
        std::string id;
        Time used;
    };

    /// The name of the cookie: cookies are told apart by host, not by port.
    static std::string GetCookieName(Request const& request);
    bool HasSession(Request const& request);
    void CheckGiven(Request const& request, std::string_view token);

    std::string token_;
    Clock clock_;
    std::mutex mutex_;
    std::map<std::string, Failures> failures_;
    std::list<Session> sessions_;
};

}  // namespace qel::serve::http
