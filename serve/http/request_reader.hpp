#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "http/limits.hpp"
#include "http/problem.hpp"
#include "http/request.hpp"

namespace qel::serve::http {

/// Makes requests of the bytes of one connection, in whatever pieces they come. One thread at a time.
class RequestReader {
public:
    enum class State {
        Empty,  ///< nothing of a request has come
        Head,   ///< part of its head
        Body,   ///< the whole head; the body is still to come
        Done,
        Failed  ///< what has come is no request, or more than is allowed: see GetProblem; nothing more is read
    };

    /// client: the address that the bytes come from.
    RequestReader(Limits const& limits, std::string client);
    ~RequestReader();

    /// Takes bytes; those past the end of the request wait for Next. Requires neither Done nor Failed.
    void Put(std::string_view bytes);
    /// Begins the next request, with what came behind the one before. Requires Done.
    void Next();

    State GetState() const noexcept { return state_; }
    /// Requires Body, or Done; its body is complete with Done.
    Request& GetRequest() noexcept { return request_; }
    /// Requires Failed.
    Problem const& GetProblem() const noexcept { return *problem_; }

private:
    struct Parser;

    void Parse();
    void TakeHead();
    void Fail(Problem problem);

    Limits limits_;
    std::string client_;
    State state_ = State::Empty;
    /// What has come and is not read yet.
    std::string waiting_;
    std::unique_ptr<Parser> parser_;
    /// Bytes of the head that have been read.
    std::size_t headSize_ = 0;
    Request request_;
    std::optional<Problem> problem_;
};

}  // namespace qel::serve::http
