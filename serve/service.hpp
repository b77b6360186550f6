#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "event_bus.hpp"
#include "http/server.hpp"
#include "mqtt/publisher.hpp"
#include "runtime.hpp"

namespace prometheus {
class Registry;
}

namespace qel::serve {

/// A whole server: a configuration, the streams that follow it, and the port where both are seen and changed.
class Service {
public:
    struct Options {
        /// The file of the configuration.
        boost::filesystem::path configuration;
        http::Endpoint endpoint{};
        /// Empty for none.
        std::string token{};
        /// The folder of the page; empty for none.
        boost::filesystem::path assets{};
        std::string version{};
        /// Where results are published; nothing for nowhere.
        std::optional<mqtt::Publisher::Options> broker{};
        http::Limits limits{};
        /// What streams and answers have to come to their end, when the server stops.
        std::chrono::milliseconds grace{5000};
    };
    /// Is given a line for each thing that does not work while the rest goes on.
    using Warn = std::function<void(std::string const&)>;

    /// Runs the streams and listens. runtime: outlives the service. Throws host::Error.
    Service(host::Runtime& runtime, Options const& options, Warn const& warn);
    /// Ends all connections, then the streams, and waits for that however long it takes.
    ~Service();

    /// The same, but for those that have not ended after the time of grace: says in one line each who they are. Nothing
    /// of the service may be used after that, not even its destructor, while they are at work; what was set and what is
    /// to be published is on the disk. One thread, once.
    std::vector<std::string> Stop();

    http::Endpoint const& GetEndpoint() const noexcept;
    /// What everything that happens is told to, and where it is counted.
    EventBus& GetBus() noexcept;
    prometheus::Registry& GetMetrics() noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve
