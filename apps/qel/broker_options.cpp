#include "broker_options.hpp"

#include <cstdint>

#include "error.hpp"
#include "mqtt/password.hpp"

namespace qel::app {

void AddBrokerOptions(CLI::App& command, BrokerArguments& arguments) {
    auto* const url = command.add_option(
        "--mqtt", arguments.url,
        "Publishes the results to a broker, mqtt:// or mqtts://[user[:password]@]host[:port][/topic-prefix]: each line "
        "once and in order, to PREFIX/STREAM/detections");
    url->type_name("URL");
    command.add_flag("--mqtt-onvif", arguments.onvif, "Publishes ONVIF metadata as well, to PREFIX/STREAM/onvif")
        ->needs(url);
    command
        .add_option("--mqtt-spool", arguments.spool,
                    "Where lines wait for the broker; CONFIG with .spool behind its name unless given")
        ->type_name("FOLDER")
        ->needs(url);
    command
        .add_option("--mqtt-spool-size", arguments.spoolMegabytes,
                    "What may wait there at most; when it is full the oldest lines are lost, and counted")
        ->type_name("MEGABYTES")
        ->check(CLI::Range(1U, 16384U))
        ->capture_default_str()
        ->needs(url);
    command
        .add_option("--mqtt-password-file", arguments.passwordFile,
                    "The password is the first line of this file, which nobody else may read; QEL_MQTT_PASSWORD of the "
                    "environment unless given")
        ->type_name("FILE")
        ->needs(url);
    command
        .add_option("--mqtt-ca", arguments.authorities,
                    "Trusts the certificates in this file, in place of the system's, for mqtts://")
        ->type_name("FILE.pem")
        ->needs(url);
}

std::optional<serve::mqtt::Publisher::Options> ReadBrokerOptions(BrokerArguments const& arguments,
                                                                 std::string const& configuration) {
    if (arguments.url.empty()) return std::nullopt;
    serve::mqtt::Publisher::Options options;
    options.broker = serve::mqtt::ParseBrokerUrl(arguments.url);
    if (!arguments.authorities.empty() && !options.broker.tls) {
        throw host::UsageError("--mqtt-ca is for a URL that begins with mqtts://");
    }
    options.broker.authorities = arguments.authorities;
    std::string const password = serve::mqtt::ReadPassword(arguments.passwordFile);
    if (!password.empty()) {
        if (options.broker.user.empty()) {
            throw host::UsageError("there is a password for the broker and no user: --mqtt mqtt://user@host");
        }
        options.broker.password = password;
    }
    options.onvif = arguments.onvif;
    options.spool = arguments.spool.empty() ? configuration + ".spool" : arguments.spool;
    options.spoolBytes = std::uint64_t{arguments.spoolMegabytes} << 20U;
    return options;
}

}  // namespace qel::app
