#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mqtt/client.hpp"
#include "mqtt/publisher_metrics.hpp"
#include "mqtt/spool.hpp"

namespace qel::serve::mqtt {

/// The lines of a spool that are on their way to the broker, each as one message or two. One thread.
class Deliveries {
public:
    /// broker: whose prefix all topics begin with. onvif: whether ONVIF metadata are sent as well. spool, metrics:
    /// outlive the object.
    Deliveries(BrokerAddress const& broker, bool onvif, Spool& spool, PublisherMetrics& metrics);

    /// Sends lines of the spool for as long as there is a connection and fewer than 20 are on their way. What cannot be
    /// sent is refused: a record that is no line, and a message for which there is no memory.
    void Send(Client& client);
    /// A message of any kind is completed, or refused where the reason is not empty.
    void Complete(int id, std::string const& refusal);
    /// A message does not go out: counted, and told once a minute.
    void Refuse(std::string const& reason);
    /// Takes off the spool what is completed, up to the first line that is not.
    void Settle();
    /// What is on its way is sent again.
    void SendAgain();
    bool IsEmpty() const noexcept { return lines_.empty(); }

private:
    /// A line and those of its messages that are not completed.
    struct Line {
        std::uint64_t number = 0;
        std::vector<int> ids{};
    };

    /// Takes the next record of the spool, as a line on its way; nothing when there is none.
    std::optional<Spool::Record> Take();
    void SendLine(Client& client, Spool::Record const& record);
    void Send(Client& client, std::string const& topic, std::string_view payload, Spool::Record const& record);

    std::string const broker_;
    std::string const prefix_;
    bool const onvif_;
    Spool& spool_;
    PublisherMetrics& metrics_;
    std::deque<Line> lines_{};
    std::chrono::steady_clock::time_point nextReport_{};
};

}  // namespace qel::serve::mqtt
