#include <algorithm>
#include <array>

#include "api/routes.hpp"
#include "text.hpp"

namespace qel::serve::api {
namespace {

constexpr std::array<std::string_view, 4> Kinds{"detection", "configuration", "model", "stream"};
/// Events are sent together up to this many bytes.
constexpr std::size_t PieceSize = 64U << 10;

std::vector<std::string> Split(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        auto const comma = text.find(',');
        if (comma != 0) parts.emplace_back(text.substr(0, comma));
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return parts;
}

EventBus::Interest ReadInterest(http::Request const& request) {
    RequireQueryAmong(request, {"kinds", "streams"});
    EventBus::Interest interest;
    interest.kinds = Split(request.GetQuery("kinds").value_or(""));
    interest.streams = Split(request.GetQuery("streams").value_or(""));
    for (std::string const& kind : interest.kinds) {
        if (std::find(Kinds.begin(), Kinds.end(), kind) != Kinds.end()) continue;
        throw http::Problem(400, "there are no events of the kind '" + kind +
                                     "'; there are: " + host::Join({Kinds.begin(), Kinds.end()}));
    }
    return interest;
}

/// Server-sent events.
class Events final : public http::BodyStream {
public:
    Events(EventBus& bus, EventBus::Interest interest) : bus_(bus), interest_(std::move(interest)) {}

    void Start(std::function<void()> wake) override {
        subscription_ = bus_.Subscribe(std::move(interest_), std::move(wake));
    }

    std::optional<std::string> Next(bool quiet) override {
        // How long a browser waits before it comes back; and the client knows at once that it is heard.
        std::string text = std::exchange(isBegun_, true) ? "" : "retry: 2000\n\n";
        if (auto const lost = subscription_->TakeLost(); lost != 0) {
            text += "event: lost\ndata: {\"count\":" + std::to_string(lost) + "}\n\n";
        }
        while (text.size() < PieceSize) {
            auto const event = subscription_->Take();
            if (!event) break;
            text += "event: " + event->kind + "\nid: " + std::to_string(event->id) + "\ndata: " + event->data + "\n\n";
        }
        if (text.empty() && quiet) text = ": still here\n\n";
        return text;
    }

private:
    EventBus& bus_;
    EventBus::Interest interest_;
    std::shared_ptr<EventBus::Subscription> subscription_;
    bool isBegun_ = false;
};

}  // namespace

void AddEventRoutes(http::Router& router, Services const& services) {
    EventBus& bus = services.bus;
    router.Add({.method = "GET", .pattern = "/api/events", .answer = [&bus](http::Request const& request) {
                    http::Response response;
                    response.contentType = "text/event-stream";
                    response.stream = std::make_unique<Events>(bus, ReadInterest(request));
                    return response;
                }});
}

}  // namespace qel::serve::api
