#include "http/server.hpp"

#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "error.hpp"
#include "serve/http/server_fixture.hpp"

namespace qel::serve::http {
namespace {

using namespace std::chrono_literals;

using ServerTest = ServerFixture;

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

}  // namespace
}  // namespace qel::serve::http
