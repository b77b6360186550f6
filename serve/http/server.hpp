#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "http/endpoint.hpp"
#include "http/limits.hpp"
#include "http/site.hpp"

namespace qel::serve::http {

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
