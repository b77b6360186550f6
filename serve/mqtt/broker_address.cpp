#include "mqtt/broker_address.hpp"

#include <string_view>

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "error.hpp"
#include "text.hpp"

namespace qel::serve::mqtt {
namespace {

// A password in the URL must not come back in what is said about it.
[[noreturn]] void Refuse(char const* reason) {
    throw host::UsageError(std::string("the broker's URL is not of the form "
                                       "mqtt[s]://[user[:password]@]host[:port][/topic-prefix]: ") +
                           reason);
}

std::string ReadPrefix(boost::urls::url_view const& url) {
    std::string prefix;
    for (std::string const& segment : url.segments()) {
        if (segment.find_first_of("+#/") != std::string::npos || segment.find('\0') != std::string::npos) {
            Refuse("the topic prefix has a '+', '#', coded '/' or null character in it");
        }
        if (segment.empty()) continue;
        if (!prefix.empty()) prefix += '/';
        prefix += segment;
    }
    if (prefix != host::ToValidUtf8(prefix)) Refuse("the topic prefix is not UTF-8");
    if (prefix.starts_with('$')) Refuse("topics that begin with '$' belong to the broker");
    return prefix;
}

}  // namespace

std::string BrokerAddress::GetName() const {
    bool const six = host.find(':') != std::string::npos;
    return (tls ? "mqtts://" : "mqtt://") + (six ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

BrokerAddress ParseBrokerUrl(std::string const& text) {
    auto const parsed = boost::urls::parse_uri(text);
    if (!parsed) Refuse("it is no URL");
    boost::urls::url_view const& url = *parsed;
    BrokerAddress address;
    if (url.scheme() != "mqtt" && url.scheme() != "mqtts") Refuse("it begins with neither mqtt:// nor mqtts://");
    address.tls = url.scheme() == "mqtts";
    if (!url.has_authority() || url.encoded_host().empty()) Refuse("it names no host");
    if (url.has_query() || url.has_fragment()) Refuse("it has a '?' or '#'");
    address.host = url.host_address();
    address.port = address.tls ? 8883 : 1883;
    if (url.has_port() && !url.port().empty()) {
        address.port = url.port_number();
        if (address.port == 0) Refuse("the port is none of 1 to 65535");
    }
    address.user = url.user();
    address.password = url.password();
    if (address.user.empty() && !address.password.empty()) Refuse("a password needs a user");
    std::string const prefix = ReadPrefix(url);
    if (!prefix.empty()) address.prefix = prefix;
    return address;
}

}  // namespace qel::serve::mqtt
