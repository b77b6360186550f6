#include "http/request_reader.hpp"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

namespace qel::serve::http {
namespace {

namespace beast = boost::beast::http;

/// What is left of a chunked body at least, wherever in it: "0" and two line ends.
constexpr std::size_t LastChunkSize = 5;

Problem Explain(boost::beast::error_code error, Limits const& limits) {
    switch (static_cast<beast::error>(error.value())) {
        case beast::error::header_limit:
            return {431,
                    "the request line and the headers have more than " + std::to_string(limits.maxHead) + " bytes"};
        case beast::error::body_limit:
            return {413, "the body has more than " + std::to_string(limits.maxBody) + " bytes"};
        case beast::error::bad_version:
            return {505, "the request line does not end in HTTP/1.1 or HTTP/1.0 and a CR LF"};
        default:
            return {400, "this is no HTTP request: " + error.message()};
    }
}

}  // namespace

struct RequestReader::Parser : beast::request_parser<beast::string_body> {};

RequestReader::RequestReader(Limits const& limits, std::string client) : limits_(limits), client_(std::move(client)) {}
RequestReader::~RequestReader() = default;

void RequestReader::Put(std::string_view bytes) {
    waiting_.append(bytes);
    Parse();
}

void RequestReader::Next() {
    request_ = {};
    parser_.reset();
    state_ = State::Empty;
    Parse();
}

void RequestReader::Fail(Problem problem) {
    problem_ = std::move(problem);
    state_ = State::Failed;
    waiting_.clear();
}

void RequestReader::Parse() {
    if (state_ == State::Empty) {
        // Old clients send an empty line after a body.
        waiting_.erase(0, std::min(waiting_.find_first_not_of("\r\n"), waiting_.size()));
        if (waiting_.empty()) return;
        state_ = State::Head;
        headSize_ = 0;
        parser_ = std::make_unique<Parser>();
        parser_->header_limit(static_cast<std::uint32_t>(limits_.maxHead));
        parser_->body_limit(limits_.maxBody);
    }
    while (!parser_->is_done() && !waiting_.empty()) {
        // The parser takes for granted that it has seen as much when it looks for the end behind an empty chunk again.
        if (state_ == State::Body && parser_->chunked() && waiting_.size() < LastChunkSize) return;
        boost::beast::error_code error;
        std::size_t const taken = parser_->put(boost::asio::buffer(waiting_), error);
        waiting_.erase(0, taken);
        if (state_ == State::Head) headSize_ += taken;
        if (error == beast::error::need_more) break;
        if (error) return Fail(Explain(error, limits_));
        if (state_ == State::Head && parser_->is_header_done()) {
            // The parser holds a head against its limit only while it waits for the end of one.
            if (headSize_ > limits_.maxHead) return Fail(Explain(beast::error::header_limit, limits_));
            TakeHead();
            if (state_ == State::Failed) return;
        }
    }
    if (!parser_->is_done()) return;
    request_.body = std::move(parser_->get().body());
    state_ = State::Done;
}

void RequestReader::TakeHead() {
    auto const& head = parser_->get();
    request_.method = std::string(head.method_string());
    request_.version = head.version();
    request_.keepAlive = head.keep_alive();
    request_.client = client_;
    for (auto const& field : head) request_.headers.emplace_back(ToLower(field.name_string()), field.value());
    if (head.version() != 11 && head.version() != 10) return Fail({505, "only HTTP/1.1 and HTTP/1.0 are spoken here"});
    if (head.target().size() > limits_.maxTarget) {
        return Fail({414, "the path has more than " + std::to_string(limits_.maxTarget) + " bytes"});
    }
    // "*" asks for the server as a whole.
    bool const isServer = head.target() == "*" && request_.method == "OPTIONS";
    if (std::string const fault = ParseTarget(isServer ? "/" : head.target(), request_); !fault.empty()) {
        return Fail({400, fault});
    }
    // Of any other coding nobody would know where the body ends, and what stands in it would be the next request.
    if (head.count(beast::field::transfer_encoding) != 0 && !head.chunked()) {
        return Fail({501, "of the transfer codings only chunked is understood"});
    }
    auto const hosts = head.count(beast::field::host);
    if (hosts > 1 || (hosts == 0 && head.version() == 11)) return Fail({400, "a request has one header Host"});
    // From here on a call takes all that there is of the body, however small its chunks.
    parser_->eager(true);
    state_ = State::Body;
}

}  // namespace qel::serve::http
