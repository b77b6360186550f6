#pragma once

#include <cstdint>
#include <string>

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

}  // namespace qel::serve::http
