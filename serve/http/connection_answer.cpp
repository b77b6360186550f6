#include <cstdio>
#include <utility>

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

#include "http/connection.hpp"

// How a connection gives an answer: whole, in pieces, or when it is there.
namespace qel::serve::http {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

/// A client has to take this many bytes a second.
constexpr std::size_t SlowestTaking = 16U << 10;

std::string FormatChunk(std::string const& piece) {
    char size[24];
    std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
    return size + piece + "\r\n";
}

}  // namespace

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
    gate_ = std::make_shared<Gate>(socket_.get_executor(), [weak = weak_from_this()] {
        if (auto const self = weak.lock()) self->OnWake();
    });
    return [gate = gate_] { gate->Knock(); };
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
    gate_->Close();
    timer_.cancel();
    Send(std::move(*response));
}

void Connection::OnPiece(std::optional<std::string> piece) {
    if (phase_ == Phase::Closed) return;
    if (!piece) {
        gate_->Close();
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

void Connection::WatchForEnd() {
    // A client that has gone is noticed although nothing is written to it; what it says meanwhile is not heard.
    socket_.async_read_some(asio::buffer(input_), [self = shared_from_this()](error_code error, std::size_t) {
        if (!self->isEndless_ || self->phase_ == Phase::Closed || self->phase_ == Phase::Lingering) return;
        if (error) return self->CloseNow();
        self->WatchForEnd();
    });
}

}  // namespace qel::serve::http
