#include "mqtt/publisher_metrics.hpp"

namespace qel::serve::mqtt {
namespace {

prometheus::Gauge& MakeGauge(prometheus::Registry& registry, char const* name, char const* help) {
    return prometheus::BuildGauge().Name(name).Help(help).Register(registry).Add({});
}

prometheus::Counter& MakeCounter(prometheus::Registry& registry, char const* name, char const* help,
                                 std::map<std::string, std::string> const& labels = {}) {
    return prometheus::BuildCounter().Name(name).Help(help).Register(registry).Add(labels);
}

constexpr char const* LostName = "qel_mqtt_lost_messages_total";
constexpr char const* LostHelp =
    "Messages that will not be published: the spool was full or could not be written, or the broker refused them.";

}  // namespace

PublisherMetrics::PublisherMetrics(prometheus::Registry& registry)
    : connected_(MakeGauge(registry, "qel_mqtt_connected", "Whether there is a connection to the broker.")),
      reconnects_(MakeCounter(registry, "qel_mqtt_reconnects_total", "Connections to the broker after the first.")),
      published_(MakeCounter(registry, "qel_mqtt_published_messages_total", "Messages that the broker completed.")),
      refused_(MakeCounter(registry, LostName, LostHelp, {{"reason", "refused"}})),
      lost_(MakeCounter(registry, LostName, LostHelp, {{"reason", "spool"}})),
      spoolMessages_(MakeGauge(registry, "qel_mqtt_spool_messages", "Lines that wait to be published.")),
      spoolBytes_(MakeGauge(registry, "qel_mqtt_spool_bytes", "Size of the spool on the disk.")) {}

void PublisherMetrics::SetSpool(Spool::Counts const& counts) {
    spoolMessages_.Set(static_cast<double>(counts.messages));
    spoolBytes_.Set(static_cast<double>(counts.bytes));
    lost_.Increment(static_cast<double>(counts.lost - lostBefore_));
    lostBefore_ = counts.lost;
}

}  // namespace qel::serve::mqtt
