#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "http/gate.hpp"
#include "http/limits.hpp"
#include "http/request_reader.hpp"
#include "http/site.hpp"
#include "http/workers.hpp"

namespace qel::serve::http {

/// What the connections of a server share.
struct Shared {
    Site const& site;
    Limits limits;
    /// For answers that may wait, and for those that take long.
    Workers& workers;
    Workers& slow;
    /// How many endless answers are being given.
    std::atomic<std::size_t> streams{0};
};

/// One client: reads a request, answers it, and goes on with the next one.
///
/// Everything happens on the socket's strand, but for answers and pieces of them, which are made by workers; there is
/// one of these at a time, and while it is made or sent nothing more is read.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Clock = std::chrono::steady_clock;
    using Socket = boost::asio::ip::tcp::socket;

    /// socket: its executor is a strand. gone: called once, at the end; it must not throw.
    Connection(Socket socket, std::string client, Shared& shared, std::function<void()> gone);
    ~Connection();

    /// Begins to read; with a refusal, answers with that and closes.
    void Start(std::optional<Problem> refusal = std::nullopt);
    /// Closes at once. Any thread.
    void Close();

    /// How long a client has been waited for: the smallest is the one whose connection is missed least.
    struct Patience {
        /// 0: between two requests, 1: in a head, 2: in a body.
        int phase;
        Clock::time_point since;

        auto operator<=>(Patience const&) const = default;
    };
    /// Nothing while the client is being served. Any thread.
    std::optional<Patience> GetPatience() const noexcept;

private:
    enum class Phase {
        Idle,     ///< nothing of the next request has come
        Head,     ///< a head is being read
        Body,     ///< a body is being read
        Working,  ///< an answer, or a piece of one, is being made or waited for
        Writing,
        Lingering,  ///< all is said; what still comes is thrown away until the client closes
        Closed
    };

    void SetPhase(Phase phase);
    void SetDeadline(std::chrono::milliseconds time);
    void OnDeadline();
    void Read();
    void OnRead(boost::system::error_code error, std::size_t count);
    void Advance();
    void Receive();
    void Continue();
    void Work();
    void Send(Response response);
    void BeginStream(bool isEndless);
    void BeginLater();
    /// Asks for the next piece, or for the answer that was put off.
    void Pump(bool quiet);
    /// On a worker's thread; wake: only for the first time.
    void MakePiece(BodyStream& stream, std::function<void()> const& wake, bool quiet);
    void MakeLater(LaterResponse& later, std::function<void()> const& wake);
    void OnPiece(std::optional<std::string> piece);
    void OnLater(std::optional<Response> response);
    void Write(std::string bytes, void (Connection::*then)());
    void OnWritten();
    void OnPieceWritten();
    void Finish();
    void WatchForEnd();
    void Linger();
    void CloseNow();
    void Leave() noexcept;

    Workers& GetWorkers() const;
    /// A function that calls Pump on the strand, from any thread and also after this connection is gone.
    std::function<void()> MakeWake();
    void OnWake();

    Socket socket_;
    boost::asio::steady_timer timer_;
    Shared& shared_;
    std::function<void()> gone_;
    RequestReader reader_;
    std::array<char, 8192> input_{};
    std::string output_;

    std::atomic<Phase> phase_{Phase::Idle};
    std::atomic<Clock::rep> since_{0};
    Site::Plan plan_;
    /// The answer that is being given; its stream or what it puts off is used by one worker at a time.
    std::shared_ptr<Response> response_;
    std::shared_ptr<Gate> gate_;
    std::function<void()> wake_;
    bool keepAlive_ = true;
    bool isEndless_ = false;
    bool isChunked_ = false;
    /// Whether a worker or a write is under way, and whether something new was told of meanwhile.
    bool isBusy_ = false;
    bool isWanted_ = false;
    Clock::time_point answerBy_{};
    std::size_t thrownAway_ = 0;
};

}  // namespace qel::serve::http
