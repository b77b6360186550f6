#include "http/server.hpp"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "error.hpp"
#include "http/connection.hpp"
#include "serve/http/client.hpp"

namespace qel::serve::http {
namespace {

using namespace std::chrono_literals;

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

class ServerTest : public testing::Test {
protected:
    ServerTest() {
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

    ~ServerTest() override { Release(); }

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

void ExpectProblem(Answer const& answer, unsigned int status) {
    EXPECT_EQ(answer.status, status) << answer.body;
    EXPECT_EQ(answer.Get("content-type"), "application/problem+json");
    auto const document = boost::json::parse(answer.body).as_object();
    EXPECT_EQ(document.at("status").to_number<unsigned int>(), status);
    EXPECT_EQ(document.at("type").as_string(), "about:blank");
    EXPECT_FALSE(document.at("title").as_string().empty());
    EXPECT_FALSE(document.at("detail").as_string().empty());
}

/// Lets the process open so many files at a time.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t count) {
        getrlimit(RLIMIT_NOFILE, &former_);
        rlimit const limit{count, former_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    DescriptorLimit(DescriptorLimit const&) = delete;
    DescriptorLimit& operator=(DescriptorLimit const&) = delete;
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &former_); }

private:
    rlimit former_{};
};

TEST_F(ServerTest, LeavesDescriptorsToOthersHoweverManyClientsCome) {
    {
        DescriptorLimit const few(40);
        Begin();
    }
    // Twenty of which are for clients; all of them wait for an answer, so that none can be given up.
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<Client>(GetPort()));
        clients.back()->Send(MakeRequest("GET", "/numbers"));
        clients.back()->ReceiveUntil("\r\n\r\n");
    }
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/here")), 503);
}

TEST_F(ServerTest, GivesUpWaitingForAnAnswerAndStopsWhenItIsMade) {
    Begin();
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/wait"));
    WaitForWaiting(1);
    EXPECT_FALSE(server_->Stop(std::chrono::steady_clock::now() + 20ms));
    EXPECT_TRUE(client.IsClosed());
    EXPECT_FALSE(server_->Stop(std::chrono::steady_clock::now() + 20ms));
    Release();
    EXPECT_TRUE(server_->Stop());
}

TEST_F(ServerTest, AnswersAndKeepsTheConnection) {
    Begin();
    Client client(GetPort());
    for (int i = 0; i < 3; ++i) {
        client.Send(MakeRequest("GET", "/echo/a%20b"));
        Answer const answer = client.Receive();
        EXPECT_EQ(answer.status, 200U);
        EXPECT_EQ(answer.body, "\"a b\"\n");
        client.Send(MakeRequest("GET", "/here"));
        EXPECT_EQ(client.Receive().body, "\"here\"\n");
    }
    EXPECT_EQ(server_->GetConnections(), 1U);
    EXPECT_EQ(reports_, 6);
}

TEST_F(ServerTest, SendsWhatEveryAnswerHas) {
    Begin();
    for (char const* const target : {"/here", "/nothing"}) {
        Answer const answer = Ask(GetPort(), MakeRequest("GET", target));
        EXPECT_TRUE(answer.Get("content-security-policy").starts_with("default-src 'none'; script-src 'self'; "));
        EXPECT_EQ(answer.Get("x-content-type-options"), "nosniff");
        EXPECT_EQ(answer.Get("referrer-policy"), "no-referrer");
        EXPECT_EQ(answer.Get("cross-origin-opener-policy"), "same-origin");
        EXPECT_EQ(answer.Get("cross-origin-resource-policy"), "same-origin");
        EXPECT_EQ(answer.Get("cache-control"), "no-store");
        EXPECT_EQ(answer.Get("date").size(), 29U);
        EXPECT_TRUE(answer.Get("date").ends_with(" GMT"));
    }
}

TEST_F(ServerTest, AnswersRequestsThatComeTogetherInTheirOrder) {
    Begin();
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/echo/1") + MakeRequest("GET", "/nothing") +
                MakeRequest("POST", "/body", "Content-Type: application/json\r\n", "[1]") +
                MakeRequest("HEAD", "/echo/2") + MakeRequest("GET", "/echo/3", "Connection: close\r\n"));
    EXPECT_EQ(client.Receive().body, "\"1\"\n");
    EXPECT_EQ(client.Receive().status, 404U);
    EXPECT_EQ(client.Receive().body, "3\n");
    Answer const head = client.Receive(false);
    EXPECT_EQ(head.status, 200U);
    EXPECT_EQ(head.Get("content-length"), "4");
    Answer const last = client.Receive();
    EXPECT_EQ(last.body, "\"3\"\n");
    EXPECT_EQ(last.Get("connection"), "close");
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ServerTest, TellsOfEachWrongRequestAsAProblem) {
    Begin();
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/nothing")), 404);
    Answer const put = Ask(GetPort(), MakeRequest("PUT", "/here"));
    ExpectProblem(put, 405);
    EXPECT_EQ(put.Get("allow"), "GET, HEAD, OPTIONS");
    Answer const type = Ask(GetPort(), MakeRequest("POST", "/body", "Content-Type: text/plain\r\n", "x"));
    ExpectProblem(type, 415);
    EXPECT_EQ(type.Get("accept-post"), "application/json");
    ExpectProblem(Ask(GetPort(), MakeRequest("POST", "/body", "Content-Length: 2000000\r\n")), 413);
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/here", "X: " + std::string(20'000, 'x') + "\r\n")), 431);
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/" + std::string(9'000, 'x'))), 414);
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/../here")), 400);
    ExpectProblem(Ask(GetPort(), "nonsense\r\n\r\n"), 400);
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/here", "Origin: http://evil.example\r\n")), 403);
    ExpectProblem(Ask(GetPort(), MakeRequest("GET", "/fails")), 500);
    Answer const options = Ask(GetPort(), MakeRequest("OPTIONS", "/body"));
    EXPECT_EQ(options.status, 204U);
    EXPECT_EQ(options.Get("allow"), "OPTIONS, POST");
    ExpectProblem(Ask(GetPort(), MakeRequest("OPTIONS", "/nothing")), 404);
}

TEST_F(ServerTest, TellsOfAWrongRequestAlthoughMoreIsComing) {
    Begin();
    Client client(GetPort());
    client.Send(MakeRequest("POST", "/nothing", "Content-Length: 1000000\r\n"));
    for (int i = 0; i < 10; ++i) client.Send(std::string(100'000, 'x'));
    ExpectProblem(client.Receive(), 404);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ServerTest, TellsWhoWaitsForItToGoOn) {
    Begin();
    Client client(GetPort());
    std::string const headers = "Content-Type: application/json\r\nContent-Length: 3\r\nExpect: 100-continue\r\n";
    client.Send(MakeRequest("POST", "/body", headers));
    EXPECT_EQ(client.Receive().status, 100U);
    client.Send("abc");
    EXPECT_EQ(client.Receive().body, "3\n");
    // And not whoever is refused anyway.
    client.Send(MakeRequest("POST", "/nothing", headers));
    EXPECT_EQ(client.Receive().status, 404U);
}

TEST_F(ServerTest, SpeaksTheOldVersionToo) {
    Begin();
    Client client(GetPort());
    client.Send("GET /here HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    EXPECT_EQ(client.Receive().Get("connection"), "keep-alive");
    client.Send("GET /here HTTP/1.0\r\n\r\n");
    EXPECT_EQ(client.Receive().body, "\"here\"\n");
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ServerTest, EndsAHeadThatIsTooSlowHoweverItTrickles) {
    Begin({.headTime = 300ms});
    Client slow(GetPort()), silent(GetPort());
    std::thread trickle([&] {
        for (char const letter : MakeRequest("GET", "/here")) {
            if (!slow.Send({letter})) return;
            std::this_thread::sleep_for(50ms);
        }
    });
    ExpectProblem(slow.Receive(), 408);
    EXPECT_TRUE(silent.IsClosed());
    trickle.join();
}

TEST_F(ServerTest, EndsABodyThatIsTooSlow) {
    Begin({.bodyTime = 200ms});
    Client client(GetPort());
    client.Send(MakeRequest("POST", "/body", "Content-Type: application/json\r\nContent-Length: 3\r\n") + "a");
    ExpectProblem(client.Receive(), 408);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ServerTest, EndsAConnectionThatIsNotUsed) {
    Begin({.idleTime = 200ms});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/here"));
    EXPECT_EQ(client.Receive().status, 200U);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ServerTest, EndsAConnectionThatDoesNotTakeItsAnswer) {
    // 8 MiB at the slowest pace would take minutes more than the test may.
    Begin({.writeTime = -510'000ms});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/large"));
    for (int i = 0; i < 200 && server_->GetConnections() == 0; ++i) std::this_thread::sleep_for(10ms);
    for (int i = 0; i < 2000 && server_->GetConnections() != 0; ++i) std::this_thread::sleep_for(10ms);
    EXPECT_EQ(server_->GetConnections(), 0U);
}

TEST_F(ServerTest, GivesThePlaceOfOneWhoWaitsToOneWhoComes) {
    Begin({.maxConnections = 3});
    Client served(GetPort()), slow(GetPort()), idle(GetPort());
    served.Send(MakeRequest("GET", "/wait"));
    WaitForWaiting(1);
    slow.Send("GET /here HT");
    idle.Send(MakeRequest("GET", "/here"));
    EXPECT_EQ(idle.Receive().status, 200U);
    Client fourth(GetPort());
    fourth.Send(MakeRequest("GET", "/here"));
    EXPECT_EQ(fourth.Receive().status, 200U);
    // Which of the two it was depends on whether the server knows already that its last answer has arrived.
    slow.Send("TP/1.1\r\nHost: localhost\r\n\r\n");
    idle.Send(MakeRequest("GET", "/here"));
    EXPECT_EQ(slow.Receive().status + idle.Receive().status, 200U);
    Release();
    EXPECT_EQ(served.Receive().body, "\"waited\"\n");
}

TEST(Patience, IsShortestWithConnectionsThatAreMissedLeast) {
    using Patience = Connection::Patience;
    Connection::Clock::time_point const now;
    EXPECT_LT((Patience{0, now}), (Patience{1, now - 1h}));
    EXPECT_LT((Patience{1, now}), (Patience{2, now - 1h}));
    EXPECT_LT((Patience{1, now - 1h}), (Patience{1, now}));
}

TEST_F(ServerTest, RefusesWhoeverComesWhileAllAreServed) {
    Begin({.maxConnections = 2});
    Client first(GetPort()), second(GetPort());
    first.Send(MakeRequest("GET", "/wait"));
    second.Send(MakeRequest("GET", "/wait"));
    WaitForWaiting(2);
    Answer const answer = Client(GetPort()).Receive();
    ExpectProblem(answer, 503);
    EXPECT_EQ(answer.Get("retry-after"), "10");
    Release();
    EXPECT_EQ(first.Receive().status, 200U);
    EXPECT_EQ(second.Receive().status, 200U);
}

TEST_F(ServerTest, StreamsAnAnswerWhileItIsMade) {
    Begin({.streamPause = 100ms});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/numbers"));
    EXPECT_NE(client.ReceiveUntil("\r\n\r\n").find("Transfer-Encoding: chunked"), std::string::npos);
    numbers_->Allow(2);
    EXPECT_NE(client.ReceiveUntil("number 2").find("number 1"), std::string::npos);
    client.ReceiveUntil(": quiet");
    {
        std::lock_guard const lock(numbers_->mutex);
        numbers_->isEnded = true;
    }
    numbers_->Allow(1);
    EXPECT_NE(client.ReceiveUntil("0\r\n\r\n").find("number 3"), std::string::npos);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ServerTest, NoticesThatTheReaderOfAStreamHasGone) {
    Begin();
    {
        Client client(GetPort());
        client.Send(MakeRequest("GET", "/numbers"));
        client.ReceiveUntil("\r\n\r\n");
    }
    auto const isGone = [&] {
        std::lock_guard const lock(numbers_->mutex);
        return numbers_->isGone;
    };
    for (int i = 0; i < 2000 && !isGone(); ++i) std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(isGone());
    numbers_->Allow(1);  // and it does no harm to wake it now
}

TEST_F(ServerTest, GivesOnlySoManyStreams) {
    Begin({.maxStreams = 1});
    Client first(GetPort());
    first.Send(MakeRequest("GET", "/numbers"));
    first.ReceiveUntil("\r\n\r\n");
    Client second(GetPort());
    second.Send(MakeRequest("GET", "/numbers"));
    ExpectProblem(second.Receive(), 503);
    second.Send(MakeRequest("GET", "/here"));
    EXPECT_EQ(second.Receive().status, 200U);
}

TEST_F(ServerTest, WaitsForAnAnswerThatComesLater) {
    Begin({.answerTime = 200ms});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/late/yes") + MakeRequest("GET", "/late/no") + MakeRequest("GET", "/here"));
    EXPECT_EQ(client.Receive().body, "{\"late\":true}\n");
    ExpectProblem(client.Receive(), 503);
    EXPECT_EQ(client.Receive().status, 200U);
}

TEST_F(ServerTest, StopsWithConnectionsInEveryState) {
    Begin();
    Client idle(GetPort()), slow(GetPort()), stream(GetPort()), large(GetPort());
    idle.Send(MakeRequest("GET", "/here"));
    idle.Receive();
    slow.Send("GET /he");
    stream.Send(MakeRequest("GET", "/numbers"));
    stream.ReceiveUntil("\r\n\r\n");
    large.Send(MakeRequest("GET", "/large"));
    std::thread waker([&] {
        for (int i = 0; i < 1000; ++i) numbers_->Allow(1);
    });
    server_->Stop();
    waker.join();
    EXPECT_TRUE(idle.IsClosed());
    EXPECT_TRUE(slow.IsClosed());
    EXPECT_TRUE(stream.IsClosed());
    EXPECT_TRUE(large.IsClosed());
    EXPECT_EQ(server_->GetConnections(), 0U);
    std::uint16_t const port = GetPort();
    server_.reset();
    numbers_->Allow(1);
    EXPECT_THROW(Client{port}, std::runtime_error);
}

TEST_F(ServerTest, SaysWhenItsPortIsTaken) {
    Begin();
    std::string const url = server_->GetEndpoint().ToUrl();
    try {
        Server(site_, server_->GetEndpoint());
        FAIL();
    } catch (host::Error const& error) {
        EXPECT_EQ(error.what(), "cannot listen on " + url + ": Address already in use");
    }
}

TEST(ParseEndpoint, TakesNumericAddresses) {
    EXPECT_EQ(ParseEndpoint("127.0.0.1:8080").ToUrl(), "http://127.0.0.1:8080");
    EXPECT_EQ(ParseEndpoint("localhost:0").ToUrl(), "http://127.0.0.1:0");
    EXPECT_EQ(ParseEndpoint("[::1]:65535").ToUrl(), "http://[::1]:65535");
    EXPECT_TRUE(ParseEndpoint("[::1]:1").IsLoopback());
    EXPECT_TRUE(ParseEndpoint("127.1.2.3:1").IsLoopback());
    EXPECT_FALSE(ParseEndpoint("0.0.0.0:1").IsLoopback());
    EXPECT_FALSE(ParseEndpoint("[::]:1").IsLoopback());
    for (char const* const text : {"", "8080", ":8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:65536",
                                   "127.0.0.1:-1", "::1:80", "[127.0.0.1]:80", "camera.example:80", "127.0.0.1:80 "}) {
        EXPECT_THROW(ParseEndpoint(text), host::UsageError) << text;
    }
}

}  // namespace
}  // namespace qel::serve::http
