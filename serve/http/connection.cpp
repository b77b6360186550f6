#include "http/connection.hpp"

#include <utility>

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

namespace qel::serve::http {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

/// What a client may still send while it is told that it was wrong, and for how long.
constexpr std::size_t MaxThrownAway = 4U << 20;
constexpr std::chrono::milliseconds LingerTime{2000};

}  // namespace

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

void Connection::Finish() {
    isBusy_ = false;
    response_.reset();
    plan_ = {};
    if (!keepAlive_) return Linger();
    SetPhase(Phase::Working);
    reader_.Next();
    Advance();
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
    if (gate_) gate_->Close();
    if (isEndless_) --shared_.streams;
    gone_();
}

}  // namespace qel::serve::http
