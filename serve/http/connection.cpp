#include "http/connection.hpp"

#include <mutex>
#include <utility>

#include <boost/asio/bind_executor.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

namespace qel::serve::http {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

/// What a client may still send while it is told that it was wrong, and for how long.
constexpr std::size_t MaxThrownAway = 4U << 20;
constexpr std::chrono::milliseconds LingerTime{2000};
/// A client has to take this many bytes a second.
constexpr std::size_t SlowestTaking = 16U << 10;

std::string FormatChunk(std::string const& piece) {
    char size[24];
    std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
    return size + piece + "\r\n";
}

}  // namespace

/// Stands between a connection and those who wake it, who may do so while it ends or later.
struct Connection::Gate {
    std::mutex mutex;
    std::weak_ptr<Connection> connection;
    bool isPosted = false;
};

Connection::Connection(Socket socket, std::string client, Shared& shared, std::function<void()> gone)
    : socket_(std::move(socket)),
      timer_(socket_.get_executor()),
      shared_(shared),
      gone_(std::move(gone)),
      reader_(shared.limits, std::move(client)) {}

Connection::~Connection() { Leave(); }

void Connection::Start(std::optional<Problem> refusal) {
    SetPhase(Phase::Idle);
    asio::post(socket_.get_executor(), [self = shared_from_this(), refusal = std::move(refusal)] {
        if (refusal) {
            self->keepAlive_ = false;
            return self->Send(refusal->ToResponse());
        }
        // The first request has to come at once; only between two requests a client may take its time.
        self->SetPhase(Phase::Head);
        self->SetDeadline(self->shared_.limits.headTime);
        self->Read();
    });
}

void Connection::Close() {
    asio::post(socket_.get_executor(), [self = shared_from_this()] { self->CloseNow(); });
}

std::optional<Connection::Patience> Connection::GetPatience() const noexcept {
    Phase const phase = phase_;
    if (phase != Phase::Idle && phase != Phase::Head && phase != Phase::Body) return std::nullopt;
    return Patience{static_cast<int>(phase), Clock::time_point(Clock::duration(since_.load()))};
}

void Connection::SetPhase(Phase phase) {
    since_ = Clock::now().time_since_epoch().count();
    phase_ = phase;
}

void Connection::SetDeadline(std::chrono::milliseconds time) {
    timer_.expires_after(time);
    timer_.async_wait([self = shared_from_this()](error_code error) {
        // Set anew while this was on its way.
        if (error || self->timer_.expiry() > Clock::now()) return;
        self->OnDeadline();
    });
}

void Connection::OnDeadline() {
    switch (phase_.load()) {
        case Phase::Head:
        case Phase::Body: {
            // A connection on which nothing was ever said ends without a word.
            if (reader_.GetState() == RequestReader::State::Empty) return CloseNow();
            // Ends the read that is under way; its end finds another phase.
            socket_.cancel();
            keepAlive_ = false;
            plan_.route = nullptr;
            return Send(Problem(408, phase_ == Phase::Head ? "the head of the request took too long"
                                                           : "the body of the request took too long")
                            .ToResponse());
        }
        case Phase::Working:
            if (!isBusy_) Pump(true);
            return;
        default:
            CloseNow();
    }
}

void Connection::Read() {
    socket_.async_read_some(asio::buffer(input_), [self = shared_from_this()](error_code error, std::size_t count) {
        self->OnRead(error, count);
    });
}

void Connection::OnRead(error_code error, std::size_t count) {
    Phase const phase = phase_;
    if (phase == Phase::Lingering) {
        thrownAway_ += count;
        if (error || thrownAway_ > MaxThrownAway) return CloseNow();
        return Read();
    }
    if (phase != Phase::Idle && phase != Phase::Head && phase != Phase::Body) return;
    if (error) return CloseNow();
    reader_.Put({input_.data(), count});
    Advance();
}

void Connection::Advance() {
    switch (reader_.GetState()) {
        case RequestReader::State::Empty:
            if (phase_ != Phase::Idle && phase_ != Phase::Head) {
                SetPhase(Phase::Idle);
                SetDeadline(shared_.limits.idleTime);
            }
            return Read();
        case RequestReader::State::Head:
            if (phase_ != Phase::Head) {
                SetPhase(Phase::Head);
                SetDeadline(shared_.limits.headTime);
            }
            return Read();
        case RequestReader::State::Body:
            if (phase_ == Phase::Body) return Read();
            Receive();
            if (plan_.route == nullptr) {
                // What comes of the body is not for us any more, and where it ends nobody looks.
                keepAlive_ = false;
                return Send(std::move(plan_.answer));
            }
            SetPhase(Phase::Body);
            SetDeadline(shared_.limits.bodyTime);
            return Continue();
        case RequestReader::State::Done:
            if (phase_ != Phase::Body) Receive();
            if (plan_.route == nullptr) return Send(std::move(plan_.answer));
            return Work();
        case RequestReader::State::Failed:
            keepAlive_ = false;
            plan_.route = nullptr;
            return Send(reader_.GetProblem().ToResponse());
    }
}

void Connection::Receive() {
    Request& request = reader_.GetRequest();
    keepAlive_ = request.keepAlive;
    plan_ = shared_.site.Receive(request);
}

void Connection::Continue() {
    // Whoever waits to be told to go on with the body is told.
    auto const expects = reader_.GetRequest().GetHeader("expect");
    if (!expects || !EqualsIgnoringCase(*expects, "100-continue")) return Read();
    output_ = "HTTP/1.1 100 Continue\r\n\r\n";
    asio::async_write(socket_, asio::buffer(output_), [self = shared_from_this()](error_code error, std::size_t) {
        if (self->phase_ != Phase::Body) return;
        if (error) return self->CloseNow();
        self->Read();
    });
}

void Connection::Work() {
    SetPhase(Phase::Working);
    timer_.cancel();
    isBusy_ = true;
    Route const& route = *plan_.route;
    if (route.work == Route::Work::Here) return Send(shared_.site.Answer(route, reader_.GetRequest()));
    // Nothing is read while it is answered: the request stays as it is.
    GetWorkers().Do([self = shared_from_this(), &route] {
        auto const response = std::make_shared<Response>(self->shared_.site.Answer(route, self->reader_.GetRequest()));
        asio::post(self->socket_.get_executor(), [self, response] { self->Send(std::move(*response)); });
    });
}

Workers& Connection::GetWorkers() const {
    bool const isSlow = plan_.route != nullptr && plan_.route->work == Route::Work::Slow;
    return isSlow ? shared_.slow : shared_.workers;
}

void Connection::Send(Response response) {
    if (phase_ == Phase::Closed) return;
    isBusy_ = false;
    SetPhase(Phase::Working);
    response_ = std::make_shared<Response>(std::move(response));
    if (response_->later) return BeginLater();
    auto const state = reader_.GetState();
    bool const isKnown = state == RequestReader::State::Body || state == RequestReader::State::Done;
    unsigned int const version = isKnown ? reader_.GetRequest().version : 11;
    std::string const method = isKnown ? reader_.GetRequest().method : "";
    bool const isEndless = response_->stream && !response_->streamSize;
    if (isEndless && method != "HEAD") {
        if (shared_.streams >= shared_.limits.maxStreams) {
            return Send(Problem(503, "too many clients are being told of events or shown pictures")
                            .With("Retry-After", "10")
                            .ToResponse());
        }
        keepAlive_ = false;
    }
    shared_.site.Report(plan_.route, method, response_->status);
    isChunked_ = IsChunked(*response_, version);
    std::string bytes = FormatHead(*response_, version, keepAlive_);
    if (method == "HEAD") {
        response_->stream.reset();
    } else if (!response_->stream) {
        bytes += response_->body;
    } else {
        BeginStream(isEndless);
        return Write(std::move(bytes), &Connection::OnPieceWritten);
    }
    Write(std::move(bytes), &Connection::OnWritten);
}

void Connection::BeginStream(bool isEndless) {
    isEndless_ = isEndless;
    isWanted_ = false;
    isBusy_ = true;
    wake_ = MakeWake();
    if (!isEndless) return;
    ++shared_.streams;
    WatchForEnd();
}

void Connection::BeginLater() {
    isWanted_ = false;
    answerBy_ = Clock::now() + shared_.limits.answerTime;
    wake_ = MakeWake();
    SetDeadline(shared_.limits.answerTime);
    Pump(false);
}

std::function<void()> Connection::MakeWake() {
    gate_ = std::make_shared<Gate>();
    gate_->connection = weak_from_this();
    return [gate = gate_] {
        std::lock_guard const lock(gate->mutex);
        if (gate->isPosted) return;
        auto const connection = gate->connection.lock();
        if (!connection) return;
        gate->isPosted = true;
        // The gate closes before the server's threads end: there is somebody to post to.
        asio::post(connection->socket_.get_executor(), [self = connection, gate] {
            {
                std::lock_guard const again(gate->mutex);
                gate->isPosted = false;
            }
            if (self->gate_ == gate) self->OnWake();
        });
    };
}

void Connection::OnWake() {
    if (phase_ == Phase::Closed) return;
    isWanted_ = true;
    if (!isBusy_) Pump(false);
}

void Connection::Pump(bool quiet) {
    isBusy_ = true;
    isWanted_ = false;
    SetPhase(Phase::Working);
    GetWorkers().Do([self = shared_from_this(), response = response_, wake = std::exchange(wake_, {}), quiet] {
        if (response->later) {
            self->MakeLater(*response->later, wake);
        } else {
            self->MakePiece(*response->stream, wake, quiet);
        }
    });
}

void Connection::MakePiece(BodyStream& stream, std::function<void()> const& wake, bool quiet) {
    try {
        if (wake) stream.Start(wake);
        auto piece = std::make_shared<std::optional<std::string>>(stream.Next(quiet));
        asio::post(socket_.get_executor(), [self = shared_from_this(), piece] { self->OnPiece(std::move(*piece)); });
    } catch (...) {
        // The head is out, so that only the end of the connection can tell.
        Close();
    }
}

void Connection::MakeLater(LaterResponse& later, std::function<void()> const& wake) {
    auto answer = std::make_shared<std::optional<Response>>();
    try {
        bool const isLast = Clock::now() >= answerBy_;
        if (wake) later.Start(wake);
        *answer = later.Get(isLast);
        if (isLast && !*answer) throw Problem(503, "there was no answer in time").With("Retry-After", "5");
    } catch (...) {
        *answer = ToResponse(std::current_exception());
    }
    asio::post(socket_.get_executor(), [self = shared_from_this(), answer] { self->OnLater(std::move(*answer)); });
}

void Connection::OnLater(std::optional<Response> response) {
    if (phase_ == Phase::Closed) return;
    isBusy_ = false;
    if (!response) {
        // The deadline may have passed while a worker was at it.
        if (isWanted_ || Clock::now() >= answerBy_) Pump(false);
        return;
    }
    gate_.reset();
    timer_.cancel();
    Send(std::move(*response));
}

void Connection::OnPiece(std::optional<std::string> piece) {
    if (phase_ == Phase::Closed) return;
    if (!piece) {
        gate_.reset();
        response_->stream.reset();
        if (isChunked_) return Write("0\r\n\r\n", &Connection::OnWritten);
        return Finish();
    }
    if (piece->empty()) {
        isBusy_ = false;
        if (isWanted_) return Pump(false);
        return SetDeadline(shared_.limits.streamPause);
    }
    Write(isChunked_ ? FormatChunk(*piece) : std::move(*piece), &Connection::OnPieceWritten);
}

void Connection::Write(std::string bytes, void (Connection::*then)()) {
    SetPhase(Phase::Writing);
    output_ = std::move(bytes);
    SetDeadline(shared_.limits.writeTime + std::chrono::seconds(output_.size() / SlowestTaking));
    asio::async_write(socket_, asio::buffer(output_), [self = shared_from_this(), then](error_code error, std::size_t) {
        if (self->phase_ != Phase::Writing) return;
        if (error) return self->CloseNow();
        ((*self).*then)();
    });
}

void Connection::OnWritten() { Finish(); }

void Connection::OnPieceWritten() { Pump(false); }

void Connection::Finish() {
    isBusy_ = false;
    response_.reset();
    plan_ = {};
    if (!keepAlive_) return Linger();
    SetPhase(Phase::Working);
    reader_.Next();
    Advance();
}

void Connection::WatchForEnd() {
    // A client that has gone is noticed although nothing is written to it; what it says meanwhile is not heard.
    socket_.async_read_some(asio::buffer(input_), [self = shared_from_this()](error_code error, std::size_t) {
        if (!self->isEndless_ || self->phase_ == Phase::Closed || self->phase_ == Phase::Lingering) return;
        if (error) return self->CloseNow();
        self->WatchForEnd();
    });
}

void Connection::Linger() {
    // To close while the client still sends would take the answer away from it.
    if (isEndless_) return CloseNow();
    error_code ignored;
    socket_.shutdown(Socket::shutdown_send, ignored);
    SetPhase(Phase::Lingering);
    SetDeadline(LingerTime);
    Read();
}

void Connection::CloseNow() {
    if (phase_ == Phase::Closed) return;
    // A worker that is just using it holds it, too.
    response_.reset();
    timer_.cancel();
    error_code ignored;
    socket_.close(ignored);
    Leave();
}

void Connection::Leave() noexcept {
    if (phase_ == Phase::Closed) return;
    SetPhase(Phase::Closed);
    if (gate_) {
        std::lock_guard const lock(gate_->mutex);
        gate_->connection.reset();
    }
    gate_.reset();
    if (isEndless_) --shared_.streams;
    gone_();
}

}  // namespace qel::serve::http
