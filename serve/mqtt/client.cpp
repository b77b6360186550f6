#include "mqtt/client.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <netdb.h>
#include <sys/socket.h>

#include "error.hpp"
#include "mqtt/library.hpp"
#include "mqtt/wake_up.hpp"

namespace qel::serve::mqtt {
namespace {

constexpr int KeepAliveSeconds = 30;
constexpr std::uint32_t SessionSeconds = 24 * 60 * 60;
constexpr int MessagesOnTheirWay = 20;
constexpr char SystemCertificates[] = "/etc/ssl/certs";

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

}  // namespace

struct Client::Impl {
    /// Who may use the handle: the client, or the thread that tries addresses.
    enum class Dialling { No, Going, Done };

    Impl(BrokerAddress const& where, Session kind, Listener& whom) : address(where), session(kind), listener(whom) {}

    void Close(int result) { Close(Explain(result)); }

    void Close(std::string reason) {
        if (!open) return;
        open = false;
        if (reason.ends_with('.')) reason.pop_back();
        if (!refusal.empty()) reason = refusal;
        if (!lastError.empty()) reason += " (" + lastError + ")";
        listener.OnClosed(reason);
    }

    void TryAddresses();
    int TryFamily();

    static std::string Explain(int result) {
        return result == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(result);
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
    bool open = false;       // or about to be
    bool connected = false;  // since the last call of Open

    // Of the thread that tries addresses, while there is one.
    std::unique_ptr<mosquitto, void (*)(mosquitto*)> handle{nullptr, &mosquitto_destroy};
    bool begun = false;       // to connect, at some time
    std::size_t family = 0;   // of the broker's addresses: where it was reached last, or is tried next
    std::size_t untried = 0;  // families that are left to try
    std::vector<char const*> families{};
    std::string refusal{};    // by the broker, of this connection
    std::string lastError{};  // that the library told of; it knows more of TLS than its results say
    std::string miss{};       // why nobody was found at the addresses that were tried; empty where one is being reached

    std::atomic<Dialling> dialling = Dialling::No;
    std::atomic<bool> abandoned = false;
    WakeUp dialled{};
};

// The library does not wait whether the first address answers, and so never tries the next: a name such as localhost
// may have one of each family, and the broker listen at one of them only. Each call of the library looks the name up
// once more.
void Client::Impl::TryAddresses() {
    if (families.empty()) {
        families = FindFamilies(address.host);
        untried = families.size();
    }
    for (; untried > 0 && !abandoned; ++family) {
        --untried;
        // What was said of another address is not said of this one.
        lastError.clear();
        int const result = TryFamily();
        miss = result > 0 ? Explain(result) : "";
        if (miss.empty()) return;
    }
}

int Client::Impl::TryFamily() {
    Check(mosquitto_string_option(handle.get(), MOSQ_OPT_BIND_ADDRESS, families[family % families.size()]));
    if (begun) return mosquitto_reconnect_async(handle.get());
    Properties properties;
    if (session == Session::Kept) {
        Check(mosquitto_property_add_int32(properties.GetSlot(), MQTT_PROP_SESSION_EXPIRY_INTERVAL, SessionSeconds));
    }
    // The function that does not wait for the connection takes no properties, but uses those of an earlier call of
    // this one, which keeps them before it finds that there is no such port.
    mosquitto_connect_bind_v5(handle.get(), address.host.c_str(), 0, KeepAliveSeconds, nullptr, properties.Get());
    int const result = mosquitto_connect_async(handle.get(), address.host.c_str(), address.port, KeepAliveSeconds);
    begun = result == MOSQ_ERR_SUCCESS;
    return result;
}

Client::Client(BrokerAddress const& address, std::string const& name, Session session, Will const& will,
               Listener& listener)
    : impl_(std::make_shared<Impl>(address, session, listener)) {
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

Client::~Client() {
    if (!dialler_.joinable()) return;
    if (IsLookingUp()) {
        // Nobody can make it end, so it keeps what it needs.
        impl_->abandoned = true;
        dialler_.detach();
    } else {
        dialler_.join();
    }
}

void Client::Open() {
    bool const wasConnected = std::exchange(impl_->connected, false);
    impl_->open = true;
    if (IsLookingUp()) return;
    TakeOver();
    impl_->refusal.clear();
    impl_->lastError.clear();
    // An address that does not even refuse is not waited for again before the others.
    if (impl_->begun && !wasConnected) ++impl_->family;
    impl_->families.clear();
    Dial();
}

void Client::Dial() {
    impl_->dialling = Impl::Dialling::Going;
    try {
        dialler_ = std::thread([impl = impl_] {
            try {
                impl->TryAddresses();
            } catch (std::exception const& error) {
                impl->miss = error.what();
            }
            impl->dialling = Impl::Dialling::Done;
            impl->dialled.Call();
        });
    } catch (...) {
        impl_->dialling = Impl::Dialling::No;
        throw;
    }
}

void Client::TakeOver() {
    if (dialler_.joinable()) dialler_.join();
    impl_->dialled.Wait(-1, false, std::chrono::milliseconds(0));
    impl_->dialling = Impl::Dialling::No;
}

bool Client::IsLookingUp() const { return impl_->dialling == Impl::Dialling::Going; }

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

bool Client::IsConnected() const { return impl_->open && impl_->connected; }

int Client::GetDescriptor() const {
    if (!impl_->open) return -1;
    return impl_->dialling == Impl::Dialling::No ? mosquitto_socket(impl_->handle.get())
                                                 : impl_->dialled.GetDescriptor();
}

bool Client::WantsToWrite() const {
    return impl_->dialling == Impl::Dialling::No && mosquitto_want_write(impl_->handle.get());
}

void Client::Serve(bool readable, bool writable) {
    if (IsLookingUp()) return;
    if (impl_->dialling == Impl::Dialling::Done) {
        TakeOver();
        // The connection is seen to when it has something to tell.
        if (!impl_->miss.empty()) impl_->Close(impl_->miss);
        return;
    }
    mosquitto* const handle = impl_->handle.get();
    // Of TLS the library does not notice that there is no connection.
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    if (readable && !impl_->connected &&
        getpeername(mosquitto_socket(handle), reinterpret_cast<sockaddr*>(&peer), &size) != 0) {
        if (impl_->untried == 0) return impl_->Close("no connection can be made");
        ++impl_->family;
        return Dial();
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
