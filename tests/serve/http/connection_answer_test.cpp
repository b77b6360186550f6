#include <thread>

#include <gtest/gtest.h>

#include "serve/http/server_fixture.hpp"

namespace qel::serve::http {
namespace {

using namespace std::chrono_literals;

using ConnectionAnswer = ServerFixture;

TEST_F(ConnectionAnswer, SendsWhatEveryAnswerHas) {
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

TEST_F(ConnectionAnswer, StreamsAnAnswerWhileItIsMade) {
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

TEST_F(ConnectionAnswer, NoticesThatTheReaderOfAStreamHasGone) {
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

TEST_F(ConnectionAnswer, GivesOnlySoManyStreams) {
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

TEST_F(ConnectionAnswer, WaitsForAnAnswerThatComesLater) {
    Begin({.answerTime = 1s});
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/late/yes") + MakeRequest("GET", "/late/no") + MakeRequest("GET", "/here"));
    EXPECT_EQ(client.Receive().body, "{\"late\":true}\n");
    ExpectProblem(client.Receive(), 503);
    EXPECT_EQ(client.Receive().status, 200U);
}

}  // namespace
}  // namespace qel::serve::http
