#include "http/response.hpp"

#include <ctime>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::serve::http {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct NoPieces : BodyStream {
    void Start(std::function<void()> /*wake*/) override {}
    std::optional<std::string> Next(bool /*quiet*/) override { return std::nullopt; }
};

Response Streamed(std::optional<std::uint64_t> size) {
    Response response;
    response.stream = std::make_unique<NoPieces>();
    response.streamSize = size;
    return response;
}

Response WithStatus(unsigned int status) {
    Response response;
    response.status = status;
    return response;
}

TEST(GetReason, IsTheNameOfAStatus) {
    EXPECT_EQ(GetReason(200), "OK");
    EXPECT_EQ(GetReason(404), "Not Found");
    EXPECT_EQ(GetReason(421), "Misdirected Request");
    EXPECT_EQ(GetReason(422), "Unprocessable Content");
    EXPECT_EQ(GetReason(429), "Too Many Requests");
    for (unsigned int const unknown : {0U, 299U, 999U, 1000U}) EXPECT_EQ(GetReason(unknown), "") << unknown;
}

TEST(MakeJson, IsOneLineOfJson) {
    Response const response = MakeJson({{"a", 1}, {"b", {true, nullptr}}}, 201);
    EXPECT_EQ(response.status, 201U);
    EXPECT_EQ(response.contentType, "application/json");
    EXPECT_EQ(response.body, "{\"a\":1,\"b\":[true,null]}\n");
}

TEST(FormatHead, BeginsWithTheVersionOfTheRequestAndEndsWithAnEmptyLine) {
    EXPECT_THAT(FormatHead(WithStatus(404), 11, true), StartsWith("HTTP/1.1 404 Not Found\r\n"));
    EXPECT_THAT(FormatHead(WithStatus(404), 10, true), StartsWith("HTTP/1.0 404 Not Found\r\n"));
    EXPECT_THAT(FormatHead(WithStatus(200), 11, true), testing::EndsWith("\r\n\r\n"));
}

TEST(FormatHead, TellsHowLongTheBodyIs) {
    EXPECT_THAT(FormatHead(MakeJsonText("12345"), 11, true), HasSubstr("\r\nContent-Length: 5\r\n"));
    EXPECT_THAT(FormatHead(WithStatus(200), 11, true), HasSubstr("\r\nContent-Length: 0\r\n"));
    EXPECT_THAT(FormatHead(Streamed(7), 11, true), HasSubstr("\r\nContent-Length: 7\r\n"));
    for (unsigned int const bare : {100U, 101U, 204U, 304U}) {
        EXPECT_THAT(FormatHead(WithStatus(bare), 11, true), Not(HasSubstr("Content-Length"))) << bare << " has no body";
    }
}

TEST(FormatHead, SaysThatABodyComesInChunksToWhoeverCanReadThem) {
    std::string const chunked = FormatHead(Streamed({}), 11, true);
    EXPECT_THAT(chunked, HasSubstr("\r\nTransfer-Encoding: chunked\r\n"));
    EXPECT_THAT(chunked, Not(HasSubstr("Content-Length")));
    std::string const old = FormatHead(Streamed({}), 10, false);
    EXPECT_THAT(old, Not(HasSubstr("Transfer-Encoding")));
    EXPECT_THAT(old, Not(HasSubstr("Content-Length"))) << "its end is that of the connection";
    EXPECT_THAT(FormatHead(Streamed(7), 11, true), Not(HasSubstr("Transfer-Encoding")));
    EXPECT_TRUE(IsChunked(Streamed({}), 11));
    EXPECT_FALSE(IsChunked(Streamed({}), 10));
    EXPECT_FALSE(IsChunked(Streamed(7), 11));
    EXPECT_FALSE(IsChunked(WithStatus(200), 11));
}

TEST(FormatHead, TellsWhetherTheConnectionTakesAnotherRequestAsItsVersionDoes) {
    EXPECT_THAT(FormatHead(WithStatus(200), 11, true), Not(HasSubstr("Connection")));
    EXPECT_THAT(FormatHead(WithStatus(200), 11, false), HasSubstr("\r\nConnection: close\r\n"));
    EXPECT_THAT(FormatHead(WithStatus(200), 10, true), HasSubstr("\r\nConnection: keep-alive\r\n"));
    EXPECT_THAT(FormatHead(WithStatus(200), 10, false), Not(HasSubstr("Connection")));
}

TEST(FormatHead, LetsAnAnswerSayItselfHowLongItMayBeKept) {
    Response response = WithStatus(200);
    EXPECT_THAT(FormatHead(response, 11, true), HasSubstr("\r\nCache-Control: no-store\r\n"));
    response.headers = {{"Cache-Control", "no-cache"}, {"ETag", "\"7\""}};
    std::string const head = FormatHead(response, 11, true);
    EXPECT_THAT(head, HasSubstr("\r\nCache-Control: no-cache\r\n"));
    EXPECT_THAT(head, Not(HasSubstr("no-store")));
    EXPECT_THAT(head, HasSubstr("\r\nETag: \"7\"\r\n"));
}

TEST(FormatHead, TellsTheTimeInGreenwich) {
    std::time_t const before = std::time(nullptr);
    std::string const head = FormatHead(WithStatus(200), 11, true);
    std::tm parts{};
    auto const at = head.find("\r\nDate: ");
    ASSERT_NE(at, std::string::npos);
    ASSERT_NE(strptime(head.c_str() + at + 8, "%a, %d %b %Y %H:%M:%S GMT\r\n", &parts), nullptr);
    int const weekDay = parts.tm_wday;
    std::time_t const told = timegm(&parts);
    EXPECT_GE(told, before);
    EXPECT_LE(told, std::time(nullptr));
    EXPECT_EQ(parts.tm_wday, weekDay);
}

}  // namespace
}  // namespace qel::serve::http
