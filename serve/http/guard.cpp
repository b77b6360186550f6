#include "http/guard.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <random>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "error.hpp"
#include "http/problem.hpp"
#include "qel/system/descriptor.hpp"

namespace qel::serve::http {
namespace {

constexpr std::size_t MinTokenSize = 16;
constexpr std::size_t MaxTokenSize = 1024;
/// How many addresses are remembered for their wrong tokens.
constexpr std::size_t MaxAddresses = 4096;

/// Nothing, with errno set, when it cannot be read.
std::optional<std::string> ReadAll(int descriptor) {
    std::array<char, MaxTokenSize + 2> bytes{};
    std::size_t size = 0;
    while (size < bytes.size()) {
        ssize_t const count = read(descriptor, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    return std::string(bytes.data(), size);
}

/// "[::1]:80" and "localhost" without their ports.
std::string_view GetName(std::string_view authority) noexcept {
    auto const bracket = authority.find(']');
    if (authority.starts_with('[') && bracket != std::string_view::npos) return authority.substr(0, bracket + 1);
    return authority.substr(0, authority.find(':'));
}

/// Whether a name leads to this machine whatever a name server says: a page elsewhere cannot have it.
bool IsLoopback(std::string_view name) noexcept {
    if (EqualsIgnoringCase(name, "localhost") || name == "[::1]") return true;
    return name.starts_with("127.") && name.find_first_not_of("0123456789.") == std::string_view::npos;
}

/// Without a port that the scheme implies.
std::string_view WithoutDefaultPort(std::string_view authority) noexcept {
    for (std::string_view const port : {":80", ":443"}) {
        if (authority.ends_with(port) && GetName(authority).size() + port.size() == authority.size()) {
            authority.remove_suffix(port.size());
            break;
        }
    }
    return authority;
}

std::string MakeId() {
    std::random_device device;  // the system's, of which nobody guesses the next
    std::string id;
    for (int i = 0; i < 8; ++i) {
        char digits[9];
        std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned int>(device()));
        id += digits;
    }
    return id;
}

}  // namespace

bool EqualsInConstantTime(std::string_view secret, std::string_view given) noexcept {
    // Every byte of what was given is looked at, whatever was found before; volatile keeps the compiler from ending
    // early.
    unsigned char volatile difference = secret.size() == given.size() ? 0 : 1;
    for (std::size_t i = 0; i < given.size(); ++i) {
        auto const other = secret.empty() ? '\0' : secret[i % secret.size()];
        difference = static_cast<unsigned char>(difference | (given[i] ^ other));
    }
    return difference == 0;
}

std::string ReadToken(std::string const& file) {
    auto const fail = [&file](std::string const& reason) -> host::UsageError {
        return host::UsageError("the token file '" + file + "' " + reason);
    };
    system::Descriptor const descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!descriptor) throw fail(std::string("cannot be read: ") + std::strerror(errno));
    struct stat status {};
    if (fstat(descriptor.Get(), &status) != 0 || !S_ISREG(status.st_mode)) throw fail("is no file");
    if ((status.st_mode & (S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH)) != 0) {
        throw fail("can be read or changed by other users: chmod 600 it");
    }
    auto text = ReadAll(descriptor.Get());
    if (!text) throw fail(std::string("cannot be read: ") + std::strerror(errno));
    text->resize(std::min(text->find_first_of("\r\n"), text->size()));
    if (text->size() < MinTokenSize || text->size() > MaxTokenSize) {
        throw fail("holds no token of 16 to 1024 characters in its first line: openssl rand -hex 32 makes one");
    }
    if (!std::all_of(text->begin(), text->end(), [](char letter) { return letter > ' ' && letter < 0x7f; })) {
        throw fail("holds characters that are not visible ASCII");
    }
    return *std::move(text);
}

Guard::Guard(std::string token, Clock clock) : token_(std::move(token)), clock_(std::move(clock)) {}

void Guard::CheckOrigin(Request const& request) const {
    std::string_view const authority = request.GetHeader("host").value_or("");
    // A name that somebody else's name server may lead here is another site to a browser, and as such reads everything.
    if (!NeedsToken() && !authority.empty() && !IsLoopback(GetName(authority))) {
        throw Problem(403,
                      "this server is there for its own machine: ask for localhost or 127.0.0.1, or start it with "
                      "--token-file");
    }
    if (auto const origin = request.GetHeader("origin")) {
        auto const scheme = origin->find("://");
        std::string_view const from =
            scheme == std::string_view::npos ? std::string_view() : origin->substr(scheme + 3);
        if (from.empty() || !EqualsIgnoringCase(WithoutDefaultPort(from), WithoutDefaultPort(authority))) {
            throw Problem(403, "a page of another site has asked");
        }
    }
    // Pictures and the like come without an origin. To follow a link to here is no harm.
    auto const site = request.GetHeader("sec-fetch-site");
    if (!site || *site == "same-origin" || *site == "none") return;
    bool const isLink = request.method == "GET" && request.GetHeader("sec-fetch-mode") == "navigate" &&
                        request.GetHeader("sec-fetch-dest") == "document";
    if (!isLink) throw Problem(403, "a page of another site has asked");
}

std::string Guard::GetCookieName(Request const& request) {
    std::string_view const authority = request.GetHeader("host").value_or("");
    std::string_view const port = authority.substr(GetName(authority).size());
    bool const isPort = port.size() > 1 && port.find_first_not_of("0123456789", 1) == std::string_view::npos;
    std::string name = "qel_session";
    if (isPort) name.append("_").append(port.substr(1));
    return name;
}

bool Guard::HasSession(Request const& request) {
    std::string_view const given = request.GetCookie(GetCookieName(request));
    if (given.empty()) return false;
    auto const now = clock_();
    std::lock_guard const lock(mutex_);
    sessions_.remove_if([now](Session const& session) { return now - session.used > SessionTime; });
    for (Session& session : sessions_) {
        if (!EqualsInConstantTime(session.id, given)) continue;
        session.used = now;
        return true;
    }
    return false;
}

void Guard::CheckGiven(Request const& request, std::string_view token) {
    auto const now = clock_();
    std::lock_guard const lock(mutex_);
    std::erase_if(failures_, [now](auto const& entry) { return now - entry.second.since > FailureTime; });
    auto const found = failures_.find(request.client);
    if (found != failures_.end() && found->second.count >= MaxFailures) {
        auto const wait = std::chrono::ceil<std::chrono::seconds>(FailureTime - (now - found->second.since)).count();
        throw Problem(429, "too many wrong tokens came from this address").With("Retry-After", std::to_string(wait));
    }
    if (EqualsInConstantTime(token_, token)) {
        if (found != failures_.end()) failures_.erase(found);
        return;
    }
    if (found == failures_.end() && failures_.size() >= MaxAddresses) failures_.erase(failures_.begin());
    Failures& failures = failures_.try_emplace(request.client, Failures{now}).first->second;
    ++failures.count;
    throw Problem(401, "the token is wrong").With("WWW-Authenticate", "Bearer realm=\"qel\", error=\"invalid_token\"");
}

void Guard::CheckToken(Request const& request) {
    if (!NeedsToken() || HasSession(request)) return;
    std::string_view const value = request.GetHeader("authorization").value_or("");
    constexpr std::string_view Scheme = "Bearer ";
    if (!EqualsIgnoringCase(value.substr(0, Scheme.size()), Scheme)) {
        throw Problem(401,
                      "this needs the token of the server's --token-file: as the header 'Authorization: Bearer "
                      "TOKEN', or once to POST /api/session")
            .With("WWW-Authenticate", "Bearer realm=\"qel\"");
    }
    CheckGiven(request, Trim(value.substr(Scheme.size())));
}

std::string Guard::SignIn(Request const& request, std::string_view token) {
    if (!NeedsToken()) return GetCookieName(request) + "=; Path=/; Max-Age=0; HttpOnly; SameSite=Strict";
    CheckGiven(request, token);
    std::string id = MakeId();
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(SessionTime).count();
    std::string cookie = GetCookieName(request) + "=" + id + "; Path=/; Max-Age=" + std::to_string(seconds) +
                         "; HttpOnly; SameSite=Strict";
    std::lock_guard const lock(mutex_);
    // Whoever has not been seen for the longest time gives way.
    if (sessions_.size() >= MaxSessions) {
        sessions_.erase(std::min_element(sessions_.begin(), sessions_.end(),
                                         [](Session const& a, Session const& b) { return a.used < b.used; }));
    }
    sessions_.push_back({std::move(id), clock_()});
    return cookie;
}

std::string Guard::SignOut(Request const& request) {
    std::string const name = GetCookieName(request);
    std::string_view const given = request.GetCookie(name);
    std::lock_guard const lock(mutex_);
    sessions_.remove_if([given](Session const& session) { return EqualsInConstantTime(session.id, given); });
    return name + "=; Path=/; Max-Age=0; HttpOnly; SameSite=Strict";
}

}  // namespace qel::serve::http
