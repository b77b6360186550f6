#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

#include <boost/filesystem/path.hpp>

#include "mqtt/broker_address.hpp"

namespace prometheus {
class Registry;
}

namespace qel::serve::mqtt {

/// Publishes lines of results to a broker, each exactly once and in order, whether the broker is there or not.
///
/// A line goes to a spool on the disk at once and leaves it when the broker has completed it (MQTT 5, quality of
/// service 2). Topics: PREFIX/STREAM/detections, where asked PREFIX/STREAM/onvif, and PREFIX/status, which says
/// "online" or "offline" and is retained. Each message tells by user properties "run" and "number" which it is: numbers
/// count up, those of a run are never used twice. A message comes a second time only after this process was killed, or
/// the broker lost what it knew of the session; it bears the same run and number then.
class Publisher {
public:
    struct Options {
        BrokerAddress broker{};
        /// Whether ONVIF metadata are published as well.
        bool onvif = false;
        /// The folder of the spool and its size at most.
        boost::filesystem::path spool{};
        std::uint64_t spoolBytes = std::uint64_t{256} << 20;
        /// Between attempts to connect: doubled with each.
        std::chrono::milliseconds firstPause{250};
        std::chrono::milliseconds longestPause{30'000};
    };

    /// Begins on a thread of its own, and counts in the registry what it does ("qel_mqtt_..."). metrics: outlives the
    /// publisher. Throws host::Error when the spool or the certificates cannot be used; not when the broker is away.
    Publisher(Options options, prometheus::Registry& metrics);
    /// Stops.
    ~Publisher();

    /// Gives what is spooled two seconds to go out where there is a connection; the rest, and what comes later, waits
    /// on the disk for the next process. One thread.
    void Stop();

    /// Takes a line; one that cannot be stored is counted. Any thread; waits for the file system at most.
    void Publish(std::string_view stream, std::string_view line) noexcept;
    bool IsConnected() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve::mqtt
