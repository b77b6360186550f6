#include "http/server.hpp"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <sys/resource.h>

#include "error.hpp"
#include "http/connection.hpp"

namespace qel::serve::http {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr int SocketThreads = 2;
constexpr std::size_t WorkerThreads = 4;
constexpr std::size_t SlowThreads = 3;
/// Connections beyond the limit that are told so; others are closed without a word.
constexpr std::size_t MaxRefusals = 32;
/// After which accepting is tried again when the system has no descriptor left.
constexpr std::chrono::milliseconds AcceptPause{50};

/// Descriptors that are left to streams and files, however many clients come.
constexpr rlim_t KeptDescriptors = 256;

/// The limits with as many connections as the system has descriptors for.
Limits FitToSystem(Limits limits) {
    rlimit descriptors{};
    if (getrlimit(RLIMIT_NOFILE, &descriptors) != 0 || descriptors.rlim_cur == RLIM_INFINITY) return limits;
    rlim_t const all = descriptors.rlim_cur;
    rlim_t const most = all > 2 * KeptDescriptors ? all - KeptDescriptors : all / 2;
    limits.maxConnections = std::min(limits.maxConnections, static_cast<std::size_t>(most));
    return limits;
}

}  // namespace

struct Server::Impl {
    Impl(Site const& site, Endpoint const& wanted, Limits const& limits)
        : shared{site, FitToSystem(limits), workers, slow},
          acceptor(asio::make_strand(context)),
          pause(acceptor.get_executor()) {
        endpoint = wanted;
        try {
            tcp::endpoint const local(asio::ip::make_address(wanted.address), wanted.port);
            acceptor.open(local.protocol());
            acceptor.set_option(tcp::acceptor::reuse_address(true));
            acceptor.bind(local);
            acceptor.listen();
            endpoint.port = acceptor.local_endpoint().port();
        } catch (boost::system::system_error const& error) {
            throw host::Error("cannot listen on " + wanted.ToUrl() + ": " + error.code().message());
        }
    }

    void Start() {
        asio::post(acceptor.get_executor(), [this] { Accept(); });
        for (int i = 0; i < SocketThreads; ++i) threads.emplace_back([this] { Run(); });
    }

    void Run() {
        while (true) {
            try {
                context.run();
                return;
            } catch (...) {
                // There was no memory for what a connection was about to do: that one ends, or runs into its deadline.
            }
        }
    }

    void Accept() {
        acceptor.async_accept(asio::make_strand(context), [this](error_code error, tcp::socket socket) {
            if (isStopped) return;
            if (!error) {
                Admit(std::move(socket));
            } else if (error != asio::error::connection_aborted) {
                // No descriptor is left for it: somebody who is not being served gives up theirs.
                {
                    std::lock_guard const lock(mutex);
                    CloseMostPatient();
                }
                pause.expires_after(AcceptPause);
                pause.async_wait([this](error_code) {
                    if (!isStopped) Accept();
                });
                return;
            }
            Accept();
        });
    }

    void Admit(tcp::socket socket) {
        error_code error;
        auto const address = socket.remote_endpoint(error).address();
        if (error) return;
        socket.set_option(tcp::no_delay(true), error);
        std::string client = address.to_string();
        std::lock_guard const lock(mutex);
        std::optional<Problem> refusal;
        if (!address.is_loopback() && CountOf(client) >= shared.limits.maxConnectionsOfAddress) {
            refusal = Problem(429, "too many connections come from this address").With("Retry-After", "10");
        } else if (connections.size() >= shared.limits.maxConnections && !CloseMostPatient()) {
            refusal = Problem(503, "too many clients are being served").With("Retry-After", "10");
        }
        if (refusal && connections.size() >= shared.limits.maxConnections + MaxRefusals) return;
        auto const id = ++lastId;
        auto const connection = std::make_shared<Connection>(std::move(socket), client, shared, [this, id]() noexcept {
            // Not here: whoever lets go of a connection may hold the mutex.
            asio::post(acceptor.get_executor(), [this, id] { Remove(id); });
        });
        connections.emplace(id, Entry{connection, std::move(client)});
        connection->Start(std::move(refusal));
    }

    std::size_t CountOf(std::string const& client) const {
        std::size_t count = 0;
        for (auto const& [id, entry] : connections) count += entry.client == client ? 1U : 0U;
        return count;
    }

    /// Closes the connection that is missed least, so that those who take their time cannot keep others out; false when
    /// all are being served. Requires the mutex.
    bool CloseMostPatient() {
        Entry* chosen = nullptr;
        std::optional<Connection::Patience> least;
        for (auto& [id, entry] : connections) {
            auto const connection = entry.connection.lock();
            auto const patience = connection && !entry.isClosing ? connection->GetPatience() : std::nullopt;
            if (!patience || (least && *least <= *patience)) continue;
            least = patience;
            chosen = &entry;
        }
        if (chosen == nullptr) return false;
        chosen->isClosing = true;
        if (auto const connection = chosen->connection.lock()) connection->Close();
        return true;
    }

    void Remove(std::uint64_t id) {
        std::lock_guard const lock(mutex);
        connections.erase(id);
        if (connections.empty()) empty.notify_all();
    }

    bool Stop(std::optional<std::chrono::steady_clock::time_point> deadline) {
        if (!isStopped.exchange(true)) CloseAll();
        if (!threads.empty()) {
            std::unique_lock lock(mutex);
            auto const isOver = [this] { return isClosing && connections.empty(); };
            if (!deadline) {
                empty.wait(lock, isOver);
            } else if (!empty.wait_until(lock, *deadline, isOver)) {
                return false;
            }
        }
        if (!workers.Stop(deadline) || !slow.Stop(deadline)) return false;
        work.reset();
        for (std::thread& thread : threads) {
            if (thread.joinable()) thread.join();
        }
        return true;
    }

    void CloseAll() {
        asio::post(acceptor.get_executor(), [this] {
            error_code ignored;
            acceptor.close(ignored);
            pause.cancel();
            // Nobody is admitted after this.
            std::lock_guard const lock(mutex);
            for (auto const& [id, entry] : connections) {
                if (auto const connection = entry.connection.lock()) connection->Close();
            }
            isClosing = true;
            empty.notify_all();
        });
    }

    struct Entry {
        std::weak_ptr<Connection> connection;
        std::string client;
        bool isClosing = false;
    };

    Endpoint endpoint;
    asio::io_context context{SocketThreads};
    asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(context);
    Workers workers{WorkerThreads};
    Workers slow{SlowThreads};
    Shared shared;
    tcp::acceptor acceptor;
    asio::steady_timer pause;
    std::atomic<bool> isStopped{false};
    mutable std::mutex mutex;
    std::condition_variable empty;
    std::unordered_map<std::uint64_t, Entry> connections;
    std::uint64_t lastId = 0;
    bool isClosing = false;
    std::vector<std::thread> threads;
};

Server::Server(Site const& site, Endpoint const& endpoint, Limits const& limits)
    : impl_(std::make_unique<Impl>(site, endpoint, limits)) {}
Server::~Server() { Stop(); }

Endpoint const& Server::GetEndpoint() const noexcept { return impl_->endpoint; }

std::size_t Server::GetConnections() const noexcept {
    std::lock_guard const lock(impl_->mutex);
    return impl_->connections.size();
}

void Server::Start() { impl_->Start(); }

bool Server::Stop(std::optional<std::chrono::steady_clock::time_point> deadline) { return impl_->Stop(deadline); }

}  // namespace qel::serve::http
