#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

struct mosquitto;

namespace qel::serve::mqtt::test {

struct Received {
    std::string topic{};
    std::string payload{};
    std::string run{};
    std::string number{};
    bool retained = false;
};

/// Takes messages from a broker with quality of service 2 and a session that is kept, and comes back when the broker
/// does. What the broker delivers a second time under one identifier is taken once.
class Subscriber {
public:
    /// Returns when the broker has confirmed the subscription.
    Subscriber(unsigned short port, std::string const& filter, std::string const& name = "subscriber");
    Subscriber(Subscriber const&) = delete;
    Subscriber& operator=(Subscriber const&) = delete;
    ~Subscriber();

    /// Waits until there are so many messages, a minute at most; returns all there are.
    std::vector<Received> WaitFor(std::size_t count) const;

private:
    struct Shared;

    void Run();

    std::unique_ptr<Shared> shared_;
    std::unique_ptr<mosquitto, std::function<void(mosquitto*)>> handle_;
    std::thread thread_{};
};

}  // namespace qel::serve::mqtt::test
