#pragma once

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "mqtt/publisher.hpp"

namespace qel::app {

/// What the options say of a broker.
struct BrokerArguments {
    std::string url{};
    bool onvif = false;
    std::string spool{};
    unsigned int spoolMegabytes = 256;
    std::string passwordFile{};
    std::string authorities{};
};

/// Adds --mqtt and the options that go with it. arguments: must outlive the parsing.
void AddBrokerOptions(CLI::App& command, BrokerArguments& arguments);

/// How to publish; nothing without --mqtt.
/// configuration: the file of the server's configuration, which names the spool unless an option does.
/// Throws host::UsageError when the options are wrong.
std::optional<serve::mqtt::Publisher::Options> ReadBrokerOptions(BrokerArguments const& arguments,
                                                                 std::string const& configuration);

}  // namespace qel::app
