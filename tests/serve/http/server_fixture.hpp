#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "http/server.hpp"
#include "serve/http/client.hpp"

namespace qel::serve::http {

/// Gives numbers whenever it is told to.
class Counting final : public BodyStream {
public:
    struct State {
        std::mutex mutex;
        std::function<void()> wake;
        int given = 0;
        int allowed = 0;
        int quiet = 0;
        bool isEnded = false;
        bool isGone = false;

        void Allow(int count) {
            std::unique_lock lock(mutex);
            allowed += count;
            auto const call = wake;
            lock.unlock();
            if (call) call();
        }
    };

    explicit Counting(std::shared_ptr<State> state) : state_(std::move(state)) {}
    ~Counting() override {
        std::lock_guard const lock(state_->mutex);
        state_->isGone = true;
    }

    void Start(std::function<void()> wake) override {
        std::lock_guard const lock(state_->mutex);
        state_->wake = std::move(wake);
    }

    std::optional<std::string> Next(bool quiet) override {
        std::lock_guard const lock(state_->mutex);
        if (quiet) ++state_->quiet;
        if (state_->given < state_->allowed) return "number " + std::to_string(++state_->given) + "\n";
        if (state_->isEnded) return std::nullopt;
        return quiet ? ": quiet\n" : "";
    }

private:
    std::shared_ptr<State> state_;
};

class Later final : public LaterResponse {
public:
    explicit Later(bool comes) : comes_(comes) {}
    void Start(std::function<void()> wake) override { wake(); }
    std::optional<Response> Get(bool last) override {
        // The second call is the one after the wake.
        if (comes_ && ++calls_ == 2) return MakeJson({{"late", true}});
        if (last) throw Problem(503, "nothing came");
        return std::nullopt;
    }

private:
    bool comes_;
    int calls_ = 0;
};

class ServerFixture : public testing::Test {
protected:
    ServerFixture() {
        using Work = Route::Work;
        router_.Add({.method = "GET",
                     .pattern = "/here",
                     .answer = [](Request const&) { return MakeJson("here"); },
                     .work = Work::Here});
        router_.Add({.method = "GET", .pattern = "/echo/{text}", .answer = [](Request const& request) {
                         return MakeJson(boost::json::value(request.GetParameter("text")));
                     }});
        router_.Add({.method = "POST",
                     .pattern = "/body",
                     .answer = [](Request const& request) { return MakeJson(boost::json::value(request.body.size())); },
                     .bodyTypes = {"application/json"}});
        router_.Add({.method = "GET", .pattern = "/fails", .answer = [](Request const&) -> Response {
                         throw std::runtime_error("it broke");
                     }});
        router_.Add({.method = "GET", .pattern = "/large", .answer = [](Request const&) {
                         return MakeJsonText(std::string(8U << 20, 'x'));
                     }});
        router_.Add({.method = "GET", .pattern = "/numbers", .answer = [this](Request const&) {
                         Response response;
                         response.contentType = "text/plain";
                         response.stream = std::make_unique<Counting>(numbers_);
                         return response;
                     }});
        router_.Add({.method = "GET",
                     .pattern = "/late/{comes}",
                     .answer =
                         [](Request const& request) {
                             Response response;
                             response.later = std::make_unique<Later>(request.GetParameter("comes") == "yes");
                             return response;
                         },
                     .work = Work::Slow});
        router_.Add({.method = "GET",
                     .pattern = "/wait",
                     .answer =
                         [this](Request const&) {
                             std::unique_lock lock(mutex_);
                             ++waiting_;
                             changed_.notify_all();
                             changed_.wait(lock, [this] { return isReleased_; });
                             return MakeJson("waited");
                         },
                     .work = Work::Slow});
    }

    ~ServerFixture() override { Release(); }

    void Begin(Limits const& limits = {}) {
        server_.emplace(site_, Endpoint(), limits);
        server_->Start();
    }
    std::uint16_t GetPort() const { return server_->GetEndpoint().port; }

    void Release() {
        std::lock_guard const lock(mutex_);
        isReleased_ = true;
        changed_.notify_all();
    }

    void WaitForWaiting(int count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return waiting_ >= count; });
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    int waiting_ = 0;
    bool isReleased_ = false;
    std::atomic<int> reports_{0};
    std::shared_ptr<Counting::State> numbers_ = std::make_shared<Counting::State>();
    Router router_;
    Guard guard_{""};
    Site site_{router_, guard_, [this](std::string const&, std::string const&, unsigned int) { ++reports_; }};
    std::optional<Server> server_;
};

inline void ExpectProblem(Answer const& answer, unsigned int status) {
    EXPECT_EQ(answer.status, status) << answer.body;
    EXPECT_EQ(answer.Get("content-type"), "application/problem+json");
    auto const document = boost::json::parse(answer.body).as_object();
    EXPECT_EQ(document.at("status").to_number<unsigned int>(), status);
    EXPECT_EQ(document.at("type").as_string(), "about:blank");
    EXPECT_FALSE(document.at("title").as_string().empty());
    EXPECT_FALSE(document.at("detail").as_string().empty());
}

}  // namespace qel::serve::http
