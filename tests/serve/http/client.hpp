#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace qel::serve::http {

/// What a server has answered.
struct Answer {
    unsigned int status = 0;
    /// Names in lower case.
    std::map<std::string, std::string> headers{};
    std::string body{};

    /// A header's value; empty where there is none.
    std::string Get(std::string const& name) const;
};

/// A socket to a port of this machine, for requests that no library would send.
class Client {
public:
    explicit Client(std::uint16_t port);
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;
    ~Client();

    /// Whether all of it could be sent.
    bool Send(std::string const& bytes);
    /// Reads one answer whole; status 0 when the connection ends, or nothing comes for so long.
    Answer Receive(bool hasBody = true, std::chrono::milliseconds patience = std::chrono::seconds(20));
    /// Reads until what has come holds the text; returns what has come, and keeps nothing of it.
    std::string ReceiveUntil(std::string const& text, std::chrono::milliseconds patience = std::chrono::seconds(20));
    /// Whether the server closes the connection, whatever comes before.
    bool IsClosed(std::chrono::milliseconds patience = std::chrono::seconds(20));
    /// Ends what is sent; answers can still be read.
    void Shut();

private:
    bool ReceiveSome(std::chrono::milliseconds patience);

    int socket_;
    std::string received_;
};

/// Sends one request on a connection of its own.
Answer Ask(std::uint16_t port, std::string const& request, bool hasBody = true);

/// A request with the header Host and what else is given, each with its line end.
std::string MakeRequest(std::string const& method, std::string const& target, std::string const& headers = "",
                        std::string const& body = "");

}  // namespace qel::serve::http
