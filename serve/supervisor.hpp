#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "event_bus.hpp"
#include "runtime.hpp"
#include "stream_list.hpp"
#include "stream_status.hpp"
#include "viewer.hpp"

namespace prometheus {
class Registry;
}

namespace qel::serve {

/// Runs the streams of a configuration, each on a thread of its own, and follows its changes. One that fails, stalls
/// or goes away is started again after a pause that grows, and disturbs no other. Its lines go to the bus as events of
/// kind "detection", its states as those of kind "stream" (as ToJson writes them). Any thread.
class Supervisor {
public:
    /// All that is given outlives the supervisor. Counts in the registry what it does.
    Supervisor(host::Runtime& runtime, StreamList list, EventBus& bus, prometheus::Registry& metrics);
    Supervisor(Supervisor const&) = delete;
    Supervisor& operator=(Supervisor const&) = delete;
    /// Stops all streams, and waits for that however long it takes.
    ~Supervisor();

    /// Tells all streams to stop, without waiting for them; the configuration is not followed any more.
    void RequestStop();
    /// Stops all streams, and waits for that until then at the latest. Says of each that has not ended, in one line,
    /// who keeps it.
    std::vector<std::string> Stop(std::chrono::steady_clock::time_point deadline);

    /// In the order of the configuration.
    std::vector<StreamStatus> GetStatus() const;
    std::optional<StreamStatus> GetStatus(std::string_view id) const;

    /// Begins to look at a stream; null where there is none of that id.
    /// wake: called for each new frame, and when the stream goes, on the stream's thread; it must not block, throw or
    /// drop the viewer; may be empty.
    std::shared_ptr<Viewer> Look(std::string_view id, LookOptions options, std::function<void()> wake = {});

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve
