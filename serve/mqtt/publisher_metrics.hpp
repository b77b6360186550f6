#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/registry.h>

#include "mqtt/spool.hpp"

namespace qel::serve::mqtt {

/// What a publisher counts, in a registry. Any thread, but for SetSpool.
class PublisherMetrics {
public:
    /// registry: outlives the object.
    explicit PublisherMetrics(prometheus::Registry& registry);

    void SetConnected(bool connected) { connected_.Set(connected ? 1 : 0); }
    void CountReconnect() { reconnects_.Increment(); }
    /// A message that the broker has completed.
    void CountPublished() { published_.Increment(); }
    void CountRefused() { refused_.Increment(); }
    /// One thread.
    void SetSpool(Spool::Counts const& counts);

private:
    prometheus::Gauge& connected_;
    prometheus::Counter& reconnects_;
    prometheus::Counter& published_;
    prometheus::Counter& refused_;
    prometheus::Counter& lost_;
    prometheus::Gauge& spoolMessages_;
    prometheus::Gauge& spoolBytes_;
    std::uint64_t lostBefore_ = 0;
};

}  // namespace qel::serve::mqtt
