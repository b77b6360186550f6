#pragma once

#include <cstdint>
#include <string>

namespace qel::serve::mqtt {

/// Where a broker is, and who asks.
struct BrokerAddress {
    std::string host{};
    std::uint16_t port = 1883;
    bool tls = false;
    /// Empty: without a name.
    std::string user{};
    std::string password{};
    /// What all topics begin with, without a slash at either end.
    std::string prefix = "qel";
    /// The file with the certificates that are trusted, for TLS; empty: those of the system.
    std::string authorities{};

    /// The address without user and password, for people: "mqtt://broker.example:1883".
    std::string GetName() const;
};

/// Reads "mqtt://[user[:password]@]host[:port][/topic-prefix]" or "mqtts://...", where the port is 1883 or 8883 unless
/// given and the prefix "qel". Throws host::UsageError when the text is no such URL.
BrokerAddress ParseBrokerUrl(std::string const& url);

}  // namespace qel::serve::mqtt
