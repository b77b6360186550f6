#include "http/connection.hpp"

#include <gtest/gtest.h>

#include "serve/http/server_fixture.hpp"

namespace qel::serve::http {
namespace {

using namespace std::chrono_literals;

using ConnectionTest = ServerFixture;

TEST_F(ConnectionTest, AnswersAndKeepsTheConnection) {
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

TEST_F(ConnectionTest, AnswersRequestsThatComeTogetherInTheirOrder) {
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

TEST_F(ConnectionTest, TellsOfEachWrongRequestAsAProblem) {
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

TEST_F(ConnectionTest, TellsOfAWrongRequestAlthoughMoreIsComing) {
    Begin();
    Client client(GetPort());
    client.Send(MakeRequest("POST", "/nothing", "Content-Length: 1000000\r\n"));
    for (int i = 0; i < 10; ++i) client.Send(std::string(100'000, 'x'));
    ExpectProblem(client.Receive(), 404);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ConnectionTest, TellsWhoWaitsForItToGoOn) {
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

TEST_F(ConnectionTest, SpeaksTheOldVersionToo) {
    Begin();
    Client client(GetPort());
    client.Send("GET /here HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    EXPECT_EQ(client.Receive().Get("connection"), "keep-alive");
    client.Send("GET /here HTTP/1.0\r\n\r\n");
    EXPECT_EQ(client.Receive().body, "\"here\"\n");
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ConnectionTest, EndsAHeadThatIsTooSlowHoweverItTrickles) {
    Begin({.headTime = 1s});
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

TEST_F(ConnectionTest, EndsABodyThatIsTooSlow) {
    Begin({.bodyTime = 200ms});
    Client client(GetPort());
    client.Send(MakeRequest("POST", "/body", "Content-Type: application/json\r\nContent-Length: 3\r\n") + "a");
    ExpectProblem(client.Receive(), 408);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ConnectionTest, EndsAConnectionThatIsNotUsed) {
    Begin({.idleTime = 200ms});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/here"));
    EXPECT_EQ(client.Receive().status, 200U);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(ConnectionTest, EndsAConnectionThatDoesNotTakeItsAnswer) {
    // 8 MiB at the slowest pace would take minutes more than the test may.
    Begin({.writeTime = -510'000ms});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/large"));
    for (int i = 0; i < 200 && server_->GetConnections() == 0; ++i) std::this_thread::sleep_for(10ms);
    for (int i = 0; i < 2000 && server_->GetConnections() != 0; ++i) std::this_thread::sleep_for(10ms);
    EXPECT_EQ(server_->GetConnections(), 0U);
}

TEST(Patience, IsShortestWithConnectionsThatAreMissedLeast) {
    using Patience = Connection::Patience;
    Connection::Clock::time_point const now;
    EXPECT_LT((Patience{0, now}), (Patience{1, now - 1h}));
    EXPECT_LT((Patience{1, now}), (Patience{2, now - 1h}));
    EXPECT_LT((Patience{1, now - 1h}), (Patience{1, now}));
}

}  // namespace
}  // namespace qel::serve::http
