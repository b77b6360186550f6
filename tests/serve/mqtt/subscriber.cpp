#include "subscriber.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <set>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <mosquitto.h>
#include <mqtt_protocol.h>

namespace qel::serve::mqtt::test {

struct Subscriber::Shared {
    std::mutex mutex{};
    std::condition_variable changed{};
    std::string filter{};
    bool subscribed = false;
    std::atomic<bool> stopping = false;
    std::vector<Received> messages{};
    std::set<std::tuple<int, std::string, std::string>> known{};
};

Subscriber::Subscriber(unsigned short port, std::string const& filter, std::string const& name)
    : shared_(std::make_unique<Shared>()) {
    mosquitto_lib_init();
    shared_->filter = filter;
    handle_ = {mosquitto_new(name.c_str(), false, shared_.get()), &mosquitto_destroy};
    mosquitto* const handle = handle_.get();
    mosquitto_int_option(handle, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    // More than the broker has on its way at a time: the library counts what comes a second time as another message.
    mosquitto_int_option(handle, MOSQ_OPT_RECEIVE_MAXIMUM, 1000);
    mosquitto_connect_v5_callback_set(
        handle, [](mosquitto* who, void* self, int, int flags, mosquitto_property const*) {
            if ((flags & 1) == 0) mosquitto_subscribe(who, nullptr, static_cast<Shared*>(self)->filter.c_str(), 2);
        });
    mosquitto_subscribe_callback_set(handle, [](mosquitto*, void* self, int, int, int const*) {
        auto& shared = *static_cast<Shared*>(self);
        std::lock_guard const guard(shared.mutex);
        shared.subscribed = true;
        shared.changed.notify_all();
    });
    mosquitto_message_v5_callback_set(
        handle, [](mosquitto*, void* self, mosquitto_message const* message, mosquitto_property const* properties) {
            Received received{
                message->topic,
                std::string(static_cast<char const*>(message->payload), static_cast<std::size_t>(message->payloadlen)),
                {},
                {},
                message->retain};
            for (auto const* one = properties; one != nullptr; one = mosquitto_property_next(one)) {
                if (mosquitto_property_identifier(one) != MQTT_PROP_USER_PROPERTY) continue;
                char* key = nullptr;
                char* value = nullptr;
                mosquitto_property_read_string_pair(one, MQTT_PROP_USER_PROPERTY, &key, &value, false);
                (std::string(key) == "run" ? received.run : received.number) = value;
                std::free(key);
                std::free(value);
            }
            auto& shared = *static_cast<Shared*>(self);
            std::lock_guard const guard(shared.mutex);
            // A broker that is started again may not remember how far a message came, and delivers it once more under
            // the same identifier. What was published twice comes under two of them.
            bool const isNew =
                received.number.empty() || shared.known.emplace(message->mid, received.run, received.number).second;
            if (!isNew) return;
            shared.messages.push_back(std::move(received));
            shared.changed.notify_all();
        });
    mosquitto_property* properties = nullptr;
    mosquitto_property_add_int32(&properties, MQTT_PROP_SESSION_EXPIRY_INTERVAL, 3600);
    int const result = mosquitto_connect_bind_v5(handle, "127.0.0.1", port, 60, nullptr, properties);
    mosquitto_property_free_all(&properties);
    if (result != MOSQ_ERR_SUCCESS) throw std::runtime_error(mosquitto_strerror(result));
    thread_ = std::thread([this] { Run(); });
    std::unique_lock guard(shared_->mutex);
    if (!shared_->changed.wait_for(guard, std::chrono::minutes(1), [this] { return shared_->subscribed; })) {
        throw std::runtime_error("the broker does not confirm a subscription");
    }
}

Subscriber::~Subscriber() {
    shared_->stopping = true;
    thread_.join();
}

// The library's own loop ends when a broker says that it goes.
void Subscriber::Run() {
    mosquitto* const handle = handle_.get();
    while (!shared_->stopping) {
        if (mosquitto_loop(handle, 50, 1) == MOSQ_ERR_SUCCESS) continue;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        mosquitto_reconnect(handle);
    }
    mosquitto_disconnect(handle);
}

std::vector<Received> Subscriber::WaitFor(std::size_t count) const {
    std::unique_lock guard(shared_->mutex);
    shared_->changed.wait_for(guard, std::chrono::minutes(1), [&] { return shared_->messages.size() >= count; });
    return shared_->messages;
}

}  // namespace qel::serve::mqtt::test
