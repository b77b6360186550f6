#include "mqtt/deliveries.hpp"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "mqtt/bytes.hpp"
#include "mqtt/onvif.hpp"
#include "mqtt/spooled_line.hpp"
#include "qel/logging/logger.hpp"

namespace qel::serve::mqtt {
namespace {

logging::Logger const Log(logging::Name("qel.serve.mqtt.Publisher"));

constexpr std::size_t LinesOnTheirWay = 20;
constexpr std::chrono::seconds ReportPause{60};

}  // namespace

Deliveries::Deliveries(BrokerAddress const& broker, bool onvif, Spool& spool, PublisherMetrics& metrics)
    : broker_(broker.GetName()), prefix_(broker.prefix), onvif_(onvif), spool_(spool), metrics_(metrics) {}

void Deliveries::Send(Client& client) {
    while (client.IsConnected() && lines_.size() < LinesOnTheirWay) {
        auto const record = Take();
        if (!record) return;
        try {
            SendLine(client, *record);
        } catch (std::exception const& error) {
            // Its record is completed with those behind it: it must not go without being counted.
            Refuse(error.what());
        }
    }
}

std::optional<Spool::Record> Deliveries::Take() {
    // Room first: of a record that is taken nothing may get lost.
    Line line;
    line.ids.reserve(2);
    lines_.push_back(std::move(line));
    try {
        auto record = spool_.Take();
        if (record) {
            lines_.back().number = record->number;
        } else {
            lines_.pop_back();
        }
        return record;
    } catch (...) {
        lines_.pop_back();
        throw;
    }
}

void Deliveries::SendLine(Client& client, Spool::Record const& record) {
    auto const line = SpooledLine::Unpack(record.bytes);
    if (!line) return Refuse("record " + std::to_string(record.number) + " of the spool is no line");
    std::string const topic = prefix_ + "/" + std::string(line->stream);
    Send(client, topic + "/detections", line->text, record);
    if (!onvif_) return;
    std::string const frame = MakeOnvifFrame(line->stream, line->time, line->text);
    if (!frame.empty()) Send(client, topic + "/onvif", frame, record);
}

void Deliveries::Send(Client& client, std::string const& topic, std::string_view payload, Spool::Record const& record) {
    int id = 0;
    std::string const refusal = client.Publish(
        {topic, payload, 2, false, {{"run", ToHex(record.run)}, {"number", std::to_string(record.number)}}}, id);
    if (refusal.empty()) {
        lines_.back().ids.push_back(id);
    } else {
        Refuse(refusal);
    }
}

void Deliveries::Complete(int id, std::string const& refusal) {
    for (auto& line : lines_) {
        auto const found = std::find(line.ids.begin(), line.ids.end(), id);
        if (found == line.ids.end()) continue;
        line.ids.erase(found);
        if (refusal.empty()) {
            metrics_.CountPublished();
        } else {
            Refuse(refusal);
        }
        return;
    }
}

void Deliveries::Refuse(std::string const& reason) {
    metrics_.CountRefused();
    auto const now = std::chrono::steady_clock::now();
    if (now < nextReport_) return;
    nextReport_ = now + ReportPause;
    Log.Log(logging::Level::Warning, "a message does not go out to the broker %0%: %1%", broker_, reason);
}

void Deliveries::Settle() {
    std::optional<std::uint64_t> completed;
    while (!lines_.empty() && lines_.front().ids.empty()) {
        completed = lines_.front().number;
        lines_.pop_front();
    }
    if (completed) spool_.Complete(*completed);
}

void Deliveries::SendAgain() {
    lines_.clear();
    spool_.Rewind();
}

}  // namespace qel::serve::mqtt
