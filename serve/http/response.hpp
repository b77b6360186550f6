#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/value.hpp>

namespace qel::serve::http {

/// A body that is made while it is sent: one piece is asked for when the one before has been taken by the client.
class BodyStream {
public:
    virtual ~BodyStream() = default;
    /// Called once before Next. wake: to be called when there is a piece after there was none; any thread, never blocks
    /// or throws; it may be called after the stream is gone, too. Called on a thread that may wait.
    virtual void Start(std::function<void()> wake) = 0;
    /// The next piece, empty while there is none; nothing at the end. Called on a thread that may wait, one call at a
    /// time. quiet: nothing was sent for a while: a sign of life is welcome.
    virtual std::optional<std::string> Next(bool quiet) = 0;
};

struct Response;

/// An answer that is made later, for what has to be waited for.
class LaterResponse {
public:
    virtual ~LaterResponse() = default;
    /// As of BodyStream.
    virtual void Start(std::function<void()> wake) = 0;
    /// The answer; nothing while there is none, but for the last call. Called on a thread that may wait.
    virtual std::optional<Response> Get(bool last) = 0;
};

/// What a request is answered with.
struct Response {
    unsigned int status = 200;
    /// Besides those that each answer has; their values hold no line ends.
    std::vector<std::pair<std::string, std::string>> headers{};
    std::string contentType{};
    std::string body{};
    /// Instead of the body.
    std::unique_ptr<BodyStream> stream{};
    /// How many bytes the stream gives; nothing for one without an end, or where nobody knows.
    std::optional<std::uint64_t> streamSize{};
    /// Instead of all the others.
    std::unique_ptr<LaterResponse> later{};
};

/// An answer of JSON.
Response MakeJson(boost::json::value const& value, unsigned int status = 200);
/// The same of a text that is JSON.
Response MakeJsonText(std::string text, unsigned int status = 200);

/// "Not Found" of 404; empty for a status that nobody knows.
std::string GetReason(unsigned int status);

/// The bytes of an answer's head, with the headers that every answer has: what may be run or shown with it, and that it
/// is not kept, unless it says so itself.
/// version: of the request, as 11 or 10; keepAlive: whether the connection takes another request.
std::string FormatHead(Response const& response, unsigned int version, bool keepAlive);

/// Whether an answer goes out in chunks, whose head says so: a stream of unknown length to whoever can read that.
bool IsChunked(Response const& response, unsigned int version) noexcept;

}  // namespace qel::serve::http
