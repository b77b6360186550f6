#include "http/request_reader.hpp"

#include <initializer_list>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace qel::serve::http {
namespace {

using State = RequestReader::State;

constexpr char Post[] = "POST /api/x?y=1 HTTP/1.1\r\nHost: a\r\nContent-Length: 3\r\nX-A: b\r\n\r\nabc";

TEST(RequestReader, ReadsARequestInWhateverPiecesItComes) {
    std::string const text(Post);
    for (std::size_t piece = 1; piece <= text.size(); ++piece) {
        SCOPED_TRACE(piece);
        RequestReader reader({}, "127.0.0.1");
        EXPECT_EQ(reader.GetState(), State::Empty);
        for (std::size_t from = 0; from < text.size(); from += piece) {
            EXPECT_NE(reader.GetState(), State::Done);
            reader.Put(std::string_view(text).substr(from, piece));
        }
        ASSERT_EQ(reader.GetState(), State::Done);
        Request const& request = reader.GetRequest();
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, (std::vector<std::string>{"api", "x"}));
        EXPECT_EQ(request.GetQuery("y"), "1");
        EXPECT_EQ(request.GetHeader("x-a"), "b");
        EXPECT_EQ(request.body, "abc");
        EXPECT_EQ(request.client, "127.0.0.1");
        EXPECT_TRUE(request.keepAlive);
    }
}

TEST(RequestReader, ReadsAChunkedBodyInWhateverPiecesItComes) {
    for (auto const& [body, text] : std::initializer_list<std::pair<std::string, std::string>>{
             {"", "0\r\n\r\n"},
             {"", "0;a=b\r\nX-A: b\r\n\r\n"},
             {"abc", "3\r\nabc\r\n0\r\n\r\n"},
             {"abcdefghijklmnopqrstuvwxyz", "1A\r\nabcdefghijklmnopqrstuvwxyz\r\n0\r\nX-A: b\r\nX-B: c\r\n\r\n"},
             {"abcd", "1\r\na\r\n1\r\nb\r\n2\r\ncd\r\n000\r\n\r\n"}}) {
        for (std::size_t piece = 1; piece <= text.size(); ++piece) {
            SCOPED_TRACE(text + " in pieces of " + std::to_string(piece));
            RequestReader reader({}, "127.0.0.1");
            reader.Put("POST /api HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n");
            for (std::size_t from = 0; from < text.size(); from += piece) {
                EXPECT_EQ(reader.GetState(), State::Body);
                reader.Put(std::string_view(text).substr(from, piece));
            }
            ASSERT_EQ(reader.GetState(), State::Done);
            EXPECT_EQ(reader.GetRequest().body, body);
        }
    }
}

TEST(RequestReader, TellsOfTheHeadBeforeTheBodyHasCome) {
    RequestReader reader({}, "");
    reader.Put(std::string_view(Post).substr(0, 10));
    EXPECT_EQ(reader.GetState(), State::Head);
    reader.Put(std::string_view(Post).substr(10, sizeof Post - 1 - 10 - 1));
    ASSERT_EQ(reader.GetState(), State::Body);
    EXPECT_EQ(reader.GetRequest().method, "POST");
    reader.Put("c");
    EXPECT_EQ(reader.GetState(), State::Done);
}

TEST(RequestReader, KeepsWhatComesBehindARequest) {
    RequestReader reader({}, "");
    reader.Put(std::string(Post) + "\r\nGET /second HTTP/1.0\r\n\r\nGET /th");
    ASSERT_EQ(reader.GetState(), State::Done);
    EXPECT_EQ(reader.GetRequest().body, "abc");
    reader.Next();
    ASSERT_EQ(reader.GetState(), State::Done);
    EXPECT_EQ(reader.GetRequest().path, std::vector<std::string>{"second"});
    EXPECT_EQ(reader.GetRequest().body, "");
    EXPECT_FALSE(reader.GetRequest().keepAlive);
    reader.Next();
    EXPECT_EQ(reader.GetState(), State::Head);
    reader.Put("ird HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_EQ(reader.GetState(), State::Done);
}

TEST(RequestReader, ReadsABodyInChunks) {
    RequestReader reader({}, "");
    reader.Put("POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1;x=y\r\nc\r\n0\r\n\r\n");
    ASSERT_EQ(reader.GetState(), State::Done);
    EXPECT_EQ(reader.GetRequest().body, "abc");
}

TEST(RequestReader, RefusesWhatIsNoRequestOrTooMuch) {
    struct Case {
        char const* name;
        std::string text;
        unsigned int status;
    };
    std::string const many(100'000, 'a');
    std::string const end = " HTTP/1.1\r\nHost: a\r\n\r\n";
    Case const cases[] = {
        {"no HTTP", "hello\r\n\r\n", 400},
        {"another protocol", std::string("\x16\x03\x01\x02\x00\x01\r\n\r\n", 10), 400},
        {"a later version", "GET / HTTP/2.0\r\nHost: a\r\n\r\n", 505},
        {"another version", "GET / HTTP/1.7\r\nHost: a\r\n\r\n", 505},
        {"a header without a colon", "GET / HTTP/1.1\r\nHost: a\r\nnonsense\r\n\r\n", 400},
        {"a blank before the colon", "GET / HTTP/1.1\r\nHost : a\r\n\r\n", 400},
        {"lines that end in LF", "GET / HTTP/1.1\nHost: a\n\n", 505},
        {"no host", "GET / HTTP/1.1\r\n\r\n", 400},
        {"two hosts", "GET / HTTP/1.1\r\nHost: a\r\nHost: b\r\n\r\n", 400},
        {"a path with ..", "GET /../etc/passwd" + end, 400},
        {"a hidden ..", "GET /%2e%2e/etc/passwd" + end, 400},
        {"NUL", "GET /a%00" + end, 400},
        {"a long path", "GET /" + many.substr(0, 9000) + end, 414},
        {"long headers", "GET / HTTP/1.1\r\nHost: a\r\nX: " + many, 431},
        {"a long request line", "GET /" + many, 431},
        {"a length that is none", "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: -1\r\n\r\n", 400},
        {"two lengths", "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab", 400},
        {"chunks and a length",
         "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\nContent-Length: 1\r\n\r\n0\r\n\r\n", 400},
        {"a length and chunks",
         "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 400},
        {"another coding", "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: gzip\r\n\r\nabc", 501},
        {"a large body", "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 1048577\r\n\r\n", 413},
        {"a chunk that is none", "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n", 400},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        RequestReader reader({}, "");
        reader.Put(c.text);
        ASSERT_EQ(reader.GetState(), State::Failed);
        EXPECT_EQ(reader.GetProblem().GetStatus(), c.status) << reader.GetProblem().what();
    }
}

TEST(RequestReader, HoldsAHeadAgainstItsLimitHoweverItsBytesCome) {
    std::string const head = "GET / HTTP/1.1\r\nHost: a\r\nX: aaaa\r\n\r\n";
    for (std::size_t const piece : {head.size(), std::size_t{1}, std::size_t{7}}) {
        for (bool const fits : {true, false}) {
            SCOPED_TRACE(std::to_string(piece) + (fits ? " fits" : " is one too many"));
            RequestReader reader({.maxHead = head.size() - (fits ? 0 : 1)}, "");
            for (std::size_t i = 0; i < head.size() && reader.GetState() != State::Failed; i += piece) {
                reader.Put(std::string_view(head).substr(i, piece));
            }
            ASSERT_EQ(reader.GetState(), fits ? State::Done : State::Failed);
            if (!fits) {
                EXPECT_EQ(reader.GetProblem().GetStatus(), 431U);
            }
        }
    }
}

TEST(RequestReader, StopsAtTheLimitOfABodyInChunks) {
    RequestReader reader({.maxBody = 1000}, "");
    reader.Put("POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(reader.GetState(), State::Body);
        reader.Put("64\r\n" + std::string(100, 'x') + "\r\n");
    }
    reader.Put("1\r\nx\r\n");
    ASSERT_EQ(reader.GetState(), State::Failed);
    EXPECT_EQ(reader.GetProblem().GetStatus(), 413U);
    EXPECT_STREQ(reader.GetProblem().what(), "the body has more than 1000 bytes");
}

}  // namespace
}  // namespace qel::serve::http
