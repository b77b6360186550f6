#include "http/endpoint.hpp"

#include <charconv>

#include <boost/asio/ip/address.hpp>

#include "error.hpp"

namespace qel::serve::http {

bool Endpoint::IsLoopback() const {
    boost::system::error_code error;
    return boost::asio::ip::make_address(address, error).is_loopback() && !error;
}

std::string Endpoint::ToUrl() const {
    bool const isV6 = address.find(':') != std::string::npos;
    return "http://" + (isV6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

Endpoint ParseEndpoint(std::string const& text) {
    auto const fail = [&text] {
        return host::UsageError("'" + text +
                                "' is no address to listen on: give ADDRESS:PORT, such as 127.0.0.1:8080 or "
                                "[::1]:8080");
    };
    auto const colon = text.rfind(':');
    if (colon == std::string::npos) throw fail();
    Endpoint endpoint;
    endpoint.address = text.substr(0, colon);
    bool const isBracketed =
        endpoint.address.size() > 2 && endpoint.address.front() == '[' && endpoint.address.back() == ']';
    if (isBracketed) endpoint.address = endpoint.address.substr(1, endpoint.address.size() - 2);
    if (endpoint.address == "localhost") endpoint.address = "127.0.0.1";
    boost::system::error_code error;
    auto const address = boost::asio::ip::make_address(endpoint.address, error);
    if (error || address.is_v6() != isBracketed) throw fail();
    char const* const begin = text.data() + colon + 1;
    char const* const end = text.data() + text.size();
    auto const [stopped, wrong] = std::from_chars(begin, end, endpoint.port);
    if (wrong != std::errc() || stopped != end) throw fail();
    return endpoint;
}

}  // namespace qel::serve::http
