#include "serve/http/client.hpp"

#include <cstdlib>
#include <stdexcept>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "http/request.hpp"

namespace qel::serve::http {

std::string Answer::Get(std::string const& name) const {
    auto const found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

Client::Client(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("cannot connect to port " + std::to_string(port));
    }
}

Client::~Client() { close(socket_); }

bool Client::Send(std::string const& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        ssize_t const count = send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool Client::ReceiveSome(std::chrono::milliseconds patience) {
    pollfd waited{socket_, POLLIN, 0};
    if (poll(&waited, 1, static_cast<int>(patience.count())) <= 0) return false;
    char bytes[16384];
    ssize_t const count = recv(socket_, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    received_.append(bytes, static_cast<std::size_t>(count));
    return true;
}

Answer Client::Receive(bool hasBody, std::chrono::milliseconds patience) {
    std::size_t end;
    while ((end = received_.find("\r\n\r\n")) == std::string::npos) {
        if (!ReceiveSome(patience)) return {};
    }
    Answer answer;
    answer.status = static_cast<unsigned int>(std::atoi(received_.substr(9, 3).c_str()));
    std::size_t line = received_.find("\r\n") + 2;
    while (line < end) {
        std::size_t const next = received_.find("\r\n", line);
        std::string const header = received_.substr(line, next - line);
        std::size_t const colon = header.find(':');
        answer.headers[ToLower(header.substr(0, colon))] = Trim(std::string_view(header).substr(colon + 1));
        line = next + 2;
    }
    received_.erase(0, end + 4);
    if (!hasBody || answer.status < 200 || answer.status == 204 || answer.status == 304) return answer;
    if (answer.Get("transfer-encoding") == "chunked") {
        while (true) {
            while ((end = received_.find("\r\n")) == std::string::npos) {
                if (!ReceiveSome(patience)) return {};
            }
            std::size_t const size = std::stoul(received_.substr(0, end), nullptr, 16);
            while (received_.size() < end + 2 + size + 2) {
                if (!ReceiveSome(patience)) return {};
            }
            answer.body += received_.substr(end + 2, size);
            received_.erase(0, end + 2 + size + 2);
            if (size == 0) return answer;
        }
    }
    std::size_t const size = std::strtoul(answer.Get("content-length").c_str(), nullptr, 10);
    while (received_.size() < size) {
        if (!ReceiveSome(patience)) return {};
    }
    answer.body = received_.substr(0, size);
    received_.erase(0, size);
    return answer;
}

std::string Client::ReceiveUntil(std::string const& text, std::chrono::milliseconds patience) {
    auto const end = std::chrono::steady_clock::now() + patience;
    while (received_.find(text) == std::string::npos) {
        if (!ReceiveSome(patience) || std::chrono::steady_clock::now() > end) break;
    }
    return std::exchange(received_, {});
}

bool Client::IsClosed(std::chrono::milliseconds patience) {
    auto const end = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < end) {
        pollfd waited{socket_, POLLIN, 0};
        if (poll(&waited, 1, 100) <= 0) continue;
        char bytes[16384];
        if (recv(socket_, bytes, sizeof bytes, 0) <= 0) return true;
    }
    return false;
}

void Client::Shut() { shutdown(socket_, SHUT_WR); }

Answer Ask(std::uint16_t port, std::string const& request, bool hasBody) {
    Client client(port);
    client.Send(request);
    return client.Receive(hasBody);
}

std::string MakeRequest(std::string const& method, std::string const& target, std::string const& headers,
                        std::string const& body) {
    std::string request = method + " " + target + " HTTP/1.1\r\nHost: localhost\r\n" + headers;
    if (!body.empty()) request += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    return request + "\r\n" + body;
}

}  // namespace qel::serve::http
