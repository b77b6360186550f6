#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "http/limits.hpp"
#include "http/site.hpp"

namespace qel::serve::http {

/// Where a server listens.
struct Endpoint {
    /// Numeric: "127.0.0.1", "::1".
    std::string address = "127.0.0.1";
    /// 0: a free one.
    std::uint16_t port = 0;

    /// Whether only this machine reaches it.
    bool IsLoopback() const;
    /// "http://127.0.0.1:8080", "http://[::1]:8080".
    std::string ToUrl() const;
};

/// Reads "ADDRESS:PORT" or "[ADDRESS]:PORT", "localhost" being 127.0.0.1. Throws host::UsageError.
Endpoint ParseEndpoint(std::string const& text);

/// Speaks HTTP/1.1 on one port: few threads for all connections, on which nothing waits, and a few more for answers
/// that have to. What a client does slowly, wrongly or too often costs that client its connection and nobody else
/// anything.
class Server {
public:
    /// Takes the port; clients wait until Start. site: outlives the server. Throws host::Error when the port cannot be
    /// had.
    Server(Site const& site, Endpoint const& endpoint, Limits const& limits = {});
    /// Stops.
    ~Server();

    /// Begins to answer. Called once.
    void Start();
    /// With the port that was found.
    Endpoint const& GetEndpoint() const noexcept;
    /// Open connections. Any thread.
    std::size_t GetConnections() const noexcept;
    /// Ends all connections, also those in the middle of an answer, and waits for the answers that are being made.
    /// deadline: when it gives up waiting, to be called again; says whether all were made.
    bool Stop(std::optional<std::chrono::steady_clock::time_point> deadline = std::nullopt);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve::http
