// With a broker of a few lines that goes at the worst moment and remembers nothing.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <prometheus/registry.h>
#include <sys/socket.h>
#include <unistd.h>

#include "mqtt/publisher.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using qel::test::TemporaryDirectory;
using std::chrono::milliseconds;

/// Knows no session when a client comes. It takes messages, and ends the first connection that sends some when the
/// client has released the first of them: the client waits for its completion then.
class ForgetfulBroker {
public:
    ForgetfulBroker() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(listener_, 8), 0);
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { Run(); });
    }
    ForgetfulBroker(ForgetfulBroker const&) = delete;
    ForgetfulBroker& operator=(ForgetfulBroker const&) = delete;
    ~ForgetfulBroker() {
        stopping_ = true;
        thread_.join();
        close(listener_);
    }

    unsigned short GetPort() const { return port_; }
    /// What was published and released while one session lasted.
    std::vector<std::string> GetCompleted() const {
        std::lock_guard const guard(mutex_);
        return completed_;
    }
    int CountConnections() const { return connections_; }

private:
    void Run() {
        while (!stopping_) {
            if (!IsReadable(listener_)) continue;
            int const client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            ++connections_;
            std::map<unsigned int, std::string> messages;
            while (!stopping_ && TakePacket(client, messages)) {}
            close(client);
        }
    }

    static bool IsReadable(int descriptor) {
        pollfd waiting{descriptor, POLLIN, 0};
        return poll(&waiting, 1, 20) > 0;
    }

    /// Reads so many bytes; less where the client goes or the broker stops.
    std::string Read(int client, std::size_t count) const {
        std::string bytes;
        while (bytes.size() < count && !stopping_) {
            if (!IsReadable(client)) continue;
            char buffer[4096];
            ssize_t const got = recv(client, buffer, std::min(sizeof buffer, count - bytes.size()), 0);
            if (got <= 0) break;
            bytes.append(buffer, static_cast<std::size_t>(got));
        }
        return bytes;
    }

    static void Answer(int client, unsigned char kind, std::string const& bytes) {
        std::string const packet = std::string{static_cast<char>(kind), static_cast<char>(bytes.size())} + bytes;
        (void)send(client, packet.data(), packet.size(), MSG_NOSIGNAL);
    }

    /// False when the connection is over.
    bool TakePacket(int client, std::map<unsigned int, std::string>& messages) {
        std::string const head = Read(client, 1);
        if (head.empty()) return false;
        auto const first = static_cast<unsigned char>(head[0]);
        std::size_t size = 0;
        for (unsigned int shift = 0;; shift += 7) {
            std::string const byte = Read(client, 1);
            if (byte.empty()) return false;
            size |= static_cast<std::size_t>(static_cast<unsigned char>(byte[0]) & 127U) << shift;
            if (static_cast<unsigned char>(byte[0]) < 128) break;
        }
        std::string const body = Read(client, size);
        if (body.size() < size) return false;
        auto const number = [&body](std::size_t at) {
            return static_cast<unsigned int>(static_cast<unsigned char>(body[at]) << 8U |
                                             static_cast<unsigned char>(body[at + 1]));
        };
        switch (first >> 4U) {
            case 1:  // CONNECT: no session, success, no properties
                Answer(client, 0x20, std::string(3, '\0'));
                return true;
            case 3: {  // PUBLISH: topic, number, properties, payload
                std::size_t const at = 2 + number(0);
                std::string const id = body.substr(at, 2);
                // Fewer than 128 bytes of properties have one byte of length.
                std::size_t const text = at + 3 + static_cast<unsigned char>(body[at + 2]);
                bool const isExactlyOnce = (first >> 1U & 3U) == 2;
                if (isExactlyOnce) messages[number(at)] = body.substr(text);
                Answer(client, isExactlyOnce ? 0x50 : 0x40, id);
                return true;
            }
            case 6: {  // PUBREL
                if (!std::exchange(hasGone_, true)) return false;
                Answer(client, 0x70, body.substr(0, 2));
                std::lock_guard const guard(mutex_);
                if (auto const found = messages.find(number(0)); found != messages.end()) {
                    completed_.push_back(found->second);
                }
                return true;
            }
            case 12:  // PINGREQ
                Answer(client, 0xD0, "");
                return true;
            default:
                return false;
        }
    }

    int listener_;
    unsigned short port_ = 0;
    std::atomic<bool> stopping_ = false;
    std::atomic<int> connections_ = 0;
    bool hasGone_ = false;
    mutable std::mutex mutex_;
    std::vector<std::string> completed_;
    std::thread thread_;
};

TEST(PublisherSession, SendsAgainWhatItHadReleasedWhenTheBrokerKnowsNothingOfIt) {
    ForgetfulBroker const broker;
    TemporaryDirectory const folder;
    prometheus::Registry metrics;
    Publisher::Options options;
    options.broker.host = "127.0.0.1";
    options.broker.port = broker.GetPort();
    options.spool = folder / "spool";
    options.firstPause = options.longestPause = milliseconds(50);
    std::vector<std::string> lines;
    {
        Publisher publisher(options, metrics);
        for (int i = 0; i < 50; ++i) {
            lines.push_back(R"({"frame":)" + std::to_string(i) + R"(,"source":"a.avi","objects":[]})");
            publisher.Publish("gate", lines.back());
        }
        for (int i = 0; i < 6000 && broker.GetCompleted().size() < lines.size(); ++i) {
            std::this_thread::sleep_for(milliseconds(10));
        }
    }
    EXPECT_EQ(broker.GetCompleted(), lines);
    // To forget the session of an earlier process, to publish, to come back, to forget once more, and to publish.
    EXPECT_EQ(broker.CountConnections(), 5);
}

}  // namespace
}  // namespace qel::serve::mqtt
