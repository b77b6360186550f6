#include "mqtt/client.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <netdb.h>
#include <sys/socket.h>

#include "error.hpp"

namespace qel::serve::mqtt {
namespace {

constexpr int KeepAliveSeconds = 30;
constexpr std::uint32_t SessionSeconds = 24 * 60 * 60;
constexpr int MessagesOnTheirWay = 20;
constexpr char SystemCertificates[] = "/etc/ssl/certs";

/// Whoever uses the library has to say so, as often as they like.
void UseLibrary() {
    static int const ready = mosquitto_lib_init();
    if (ready != MOSQ_ERR_SUCCESS) throw host::Error("the MQTT library cannot be used");
}

void Check(int result) {
    if (result == MOSQ_ERR_NOMEM) throw std::bad_alloc();
    if (result != MOSQ_ERR_SUCCESS) throw host::Error(std::string("MQTT: ") + mosquitto_strerror(result));
}

/// Addresses to bind to so that only the broker's of one family are tried, in the order in which the system prefers
/// them; a single null where there is nothing to choose.
std::vector<char const*> FindFamilies(std::string const& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    std::vector<char const*> families;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &found) == 0) {
        for (addrinfo const* next = found; next != nullptr; next = next->ai_next) {
            char const* const any = next->ai_family == AF_INET6 ? "::" : "0.0.0.0";
            if (std::find(families.begin(), families.end(), any) == families.end()) families.push_back(any);
        }
        freeaddrinfo(found);
    }
    return families.size() > 1 ? families : std::vector<char const*>{nullptr};
}

/// A list of MQTT 5 properties.
class Properties {
public:
    Properties() = default;
    Properties(Properties const&) = delete;
    Properties& operator=(Properties const&) = delete;
    ~Properties() { mosquitto_property_free_all(&list_); }

    mosquitto_property** GetSlot() { return &list_; }
    mosquitto_property const* Get() const { return list_; }

private:
    mosquitto_property* list_ = nullptr;
};

}  // namespace

struct Client::Impl {
    Impl(BrokerAddress const& where, Session kind, Listener& whom) : address(where), session(kind), listener(whom) {}

    void Close(int result) {
        Close(std::string(result == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(result)));
    }

    void Close(std::string reason) {
        if (!open) return;
        open = false;
        if (reason.ends_with('.')) reason.pop_back();
        if (!refusal.empty()) reason = refusal;
        if (!lastError.empty()) reason += " (" + lastError + ")";
        lastError.clear();
        refusal.clear();
        listener.OnClosed(reason);
    }

    static void OnConnect(mosquitto*, void* self, int result, int flags, mosquitto_property const*) {
        auto& impl = *static_cast<Impl*>(self);
        if (result == 0) {
            impl.connected = true;
            impl.listener.OnConnected((flags & 1) != 0);
        } else {
            impl.refusal = std::string("the broker refuses: ") + mosquitto_reason_string(result);
        }
    }

    static void OnPublish(mosquitto*, void* self, int id, int reason, mosquitto_property const*) {
        static_cast<Impl*>(self)->listener.OnCompleted(id, reason < 128 ? "" : mosquitto_reason_string(reason));
    }

    static void OnLog(mosquitto*, void* self, int level, char const* text) {
        if (level == MOSQ_LOG_ERR) static_cast<Impl*>(self)->lastError = text;
    }

    BrokerAddress address;
    Session session;
    Listener& listener;
    std::unique_ptr<mosquitto, void (*)(mosquitto*)> handle{nullptr, &mosquitto_destroy};
    bool begun = false;       // to connect, at some time
    bool open = false;        // or about to be
    bool connected = false;   // since the last call of Open
    std::size_t family = 0;   // of the broker's addresses: where it was reached last, or is tried next
    std::size_t untried = 0;  // families that are left to try
    std::vector<char const*> families{};
    std::string refusal{};    // by the broker, of this connection
    std::string lastError{};  // that the library told of; it knows more of TLS than its results say
};

Client::Client(BrokerAddress const& address, std::string const& name, Session session, Will const& will,
               Listener& listener)
    : impl_(std::make_unique<Impl>(address, session, listener)) {
    UseLibrary();
    impl_->handle.reset(mosquitto_new(name.c_str(), session == Session::Fresh, impl_.get()));
    mosquitto* const handle = impl_->handle.get();
    if (handle == nullptr) throw std::bad_alloc();
    Check(mosquitto_int_option(handle, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5));
    Check(mosquitto_int_option(handle, MOSQ_OPT_TCP_NODELAY, 1));
    Check(mosquitto_int_option(handle, MOSQ_OPT_SEND_MAXIMUM, MessagesOnTheirWay));
    if (!address.user.empty()) {
        char const* const password = address.password.empty() ? nullptr : address.password.c_str();
        Check(mosquitto_username_pw_set(handle, address.user.c_str(), password));
    }
    if (address.tls) {
        // The library's own option for the system's certificates forbids to connect a second time.
        bool const isSystem = address.authorities.empty();
        char const* const file = isSystem ? nullptr : address.authorities.c_str();
        if (mosquitto_tls_set(handle, file, isSystem ? SystemCertificates : nullptr, nullptr, nullptr, nullptr) != 0) {
            throw host::Error("cannot read the certificates in '" +
                              (isSystem ? SystemCertificates : address.authorities) + "'");
        }
    }
    if (!will.topic.empty()) {
        Check(mosquitto_will_set(handle, will.topic.c_str(), static_cast<int>(will.payload.size()), will.payload.data(),
                                 1, true));
    }
    mosquitto_connect_v5_callback_set(handle, &Impl::OnConnect);
    mosquitto_publish_v5_callback_set(handle, &Impl::OnPublish);
    mosquitto_log_callback_set(handle, &Impl::OnLog);
}

Client::~Client() = default;

void Client::Open() {
    // An address that does not even refuse is not waited for again before the others.
    if (impl_->begun && !impl_->connected) ++impl_->family;
    impl_->open = true;
    impl_->connected = false;
    impl_->families = FindFamilies(impl_->address.host);
    impl_->untried = impl_->families.size();
    TryFamily();
}

// The library does not wait whether the first address answers, and so never tries the next: a name such as localhost
// may have one of each family, and the broker listen at one of them only.
void Client::TryFamily() {
    mosquitto* const handle = impl_->handle.get();
    --impl_->untried;
    Check(mosquitto_string_option(handle, MOSQ_OPT_BIND_ADDRESS,
                                  impl_->families[impl_->family % impl_->families.size()]));
    int result = MOSQ_ERR_SUCCESS;
    if (!impl_->begun) {
        Properties properties;
        if (impl_->session == Session::Kept) {
            Check(
                mosquitto_property_add_int32(properties.GetSlot(), MQTT_PROP_SESSION_EXPIRY_INTERVAL, SessionSeconds));
        }
        // The function that does not wait for the connection takes no properties, but uses those of an earlier call of
        // this one, which keeps them before it finds that there is no such port.
        mosquitto_connect_bind_v5(handle, impl_->address.host.c_str(), 0, KeepAliveSeconds, nullptr, properties.Get());
        result = mosquitto_connect_async(handle, impl_->address.host.c_str(), impl_->address.port, KeepAliveSeconds);
        impl_->begun = result == MOSQ_ERR_SUCCESS;
    } else {
        result = mosquitto_reconnect_async(handle);
    }
    if (result > 0) Miss(result == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(result));
}

void Client::Miss(std::string reason) {
    ++impl_->family;
    if (impl_->untried > 0) return TryFamily();
    impl_->Close(std::move(reason));
}

void Client::Disconnect() { mosquitto_disconnect(impl_->handle.get()); }

std::string Client::Publish(Message const& message, int& id) {
    Properties properties;
    mosquitto_property** const slot = properties.GetSlot();
    Check(mosquitto_property_add_byte(slot, MQTT_PROP_PAYLOAD_FORMAT_INDICATOR, 1));
    for (auto const& [name, value] : message.properties) {
        Check(mosquitto_property_add_string_pair(slot, MQTT_PROP_USER_PROPERTY, name.c_str(), value.c_str()));
    }
    int const result =
        mosquitto_publish_v5(impl_->handle.get(), &id, message.topic.c_str(), static_cast<int>(message.payload.size()),
                             message.payload.data(), message.quality, message.retain, properties.Get());
    switch (result) {
        case MOSQ_ERR_SUCCESS:
            break;
        // The message is kept by the library already, and goes out with the next connection.
        case MOSQ_ERR_NO_CONN:
        case MOSQ_ERR_CONN_LOST:
        case MOSQ_ERR_ERRNO:
        case MOSQ_ERR_TLS:
            impl_->Close(result);
            break;
        case MOSQ_ERR_NOMEM:
            throw std::bad_alloc();
        default:
            return mosquitto_strerror(result);
    }
    return {};
}

int Client::GetSocket() const { return impl_->open ? mosquitto_socket(impl_->handle.get()) : -1; }

bool Client::WantsToWrite() const { return mosquitto_want_write(impl_->handle.get()); }

void Client::Serve(bool readable, bool writable) {
    mosquitto* const handle = impl_->handle.get();
    // Of TLS the library does not notice that there is no connection.
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    if (readable && !impl_->connected &&
        getpeername(mosquitto_socket(handle), reinterpret_cast<sockaddr*>(&peer), &size) != 0) {
        return Miss("no connection can be made");
    }
    int result = MOSQ_ERR_SUCCESS;
    if (readable) result = mosquitto_loop_read(handle, 1);
    if (result == MOSQ_ERR_SUCCESS && writable) result = mosquitto_loop_write(handle, 1);
    if (result == MOSQ_ERR_SUCCESS) result = mosquitto_loop_misc(handle);
    if (result != MOSQ_ERR_SUCCESS || mosquitto_socket(handle) < 0) {
        impl_->Close(result == MOSQ_ERR_SUCCESS ? MOSQ_ERR_CONN_LOST : result);
    }
}

}  // namespace qel::serve::mqtt
