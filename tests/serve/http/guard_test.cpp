#include "http/guard.hpp"

#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "error.hpp"
#include "http/problem.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::http {
namespace {

constexpr char Token[] = "0123456789abcdef";

unsigned int GetStatus(std::function<void()> const& check) {
    try {
        check();
        return 200;
    } catch (Problem const& problem) {
        return problem.GetStatus();
    }
}

Request MakeRequest(Request::Pairs headers) {
    Request request;
    request.method = "GET";
    request.client = "127.0.0.1";
    request.headers = std::move(headers);
    return request;
}

TEST(EqualsInConstantTime, ComparesAllOfBoth) {
    EXPECT_TRUE(EqualsInConstantTime("abc", "abc"));
    EXPECT_TRUE(EqualsInConstantTime("", ""));
    for (auto const& [secret, given] : {std::pair{"abc", "abd"},
                                        {"abc", "xbc"},
                                        {"abc", "ab"},
                                        {"abc", "abcabc"},
                                        {"abc", ""},
                                        {"", "abc"},
                                        {"aa", "a"}}) {
        EXPECT_FALSE(EqualsInConstantTime(secret, given)) << secret << " and " << given;
    }
}

TEST(Guard, RefusesWhatAPageOfAnotherSiteAsks) {
    struct Case {
        char const* name;
        Request::Pairs headers;
        unsigned int status;
    };
    Case const cases[] = {
        {"a program", {{"host", "127.0.0.1:8080"}}, 200},
        {"by its name", {{"host", "LocalHost:8080"}}, 200},
        {"IPv6", {{"host", "[::1]:8080"}}, 200},
        {"HTTP/1.0 without a host", {}, 200},
        {"a name that somebody leads here", {{"host", "evil.example:8080"}}, 403},
        {"a name that looks like an address", {{"host", "127.0.0.1.evil.example"}}, 403},
        {"the own page", {{"host", "localhost:8080"}, {"origin", "http://localhost:8080"}}, 200},
        {"the own page at the usual port", {{"host", "localhost"}, {"origin", "http://localhost:80"}}, 200},
        {"another site", {{"host", "localhost:8080"}, {"origin", "http://evil.example"}}, 403},
        {"another port", {{"host", "localhost:8080"}, {"origin", "http://localhost:9090"}}, 403},
        {"a page without an origin", {{"host", "localhost:8080"}, {"origin", "null"}}, 403},
        {"an empty origin", {{"host", "localhost:8080"}, {"origin", ""}}, 403},
        {"a picture on another site", {{"host", "localhost"}, {"sec-fetch-site", "cross-site"}}, 403},
        {"a picture at another port", {{"host", "localhost"}, {"sec-fetch-site", "same-site"}}, 403},
        {"a picture of the page", {{"host", "localhost"}, {"sec-fetch-site", "same-origin"}}, 200},
        {"typed in", {{"host", "localhost"}, {"sec-fetch-site", "none"}}, 200},
        {"a link",
         {{"host", "localhost"},
          {"sec-fetch-site", "cross-site"},
          {"sec-fetch-mode", "navigate"},
          {"sec-fetch-dest", "document"}},
         200},
        {"a frame",
         {{"host", "localhost"},
          {"sec-fetch-site", "cross-site"},
          {"sec-fetch-mode", "navigate"},
          {"sec-fetch-dest", "iframe"}},
         403},
    };
    Guard const guard("");
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(GetStatus([&] { guard.CheckOrigin(MakeRequest(c.headers)); }), c.status);
    }
}

TEST(Guard, WithATokenAnswersToAnyNameButNoOtherPage) {
    Guard const guard(Token);
    EXPECT_NO_THROW(guard.CheckOrigin(MakeRequest({{"host", "camera.example"}})));
    EXPECT_NO_THROW(guard.CheckOrigin(MakeRequest({{"host", "camera.example"}, {"origin", "https://camera.example"}})));
    EXPECT_THROW(guard.CheckOrigin(MakeRequest({{"host", "camera.example"}, {"origin", "https://evil.example"}})),
                 Problem);
}

TEST(Guard, AsksForTheToken) {
    Guard guard(Token);
    auto const check = [&](Request::Pairs headers) {
        return GetStatus([&] { guard.CheckToken(MakeRequest(std::move(headers))); });
    };
    EXPECT_EQ(check({}), 401U);
    EXPECT_EQ(check({{"authorization", "Basic 0123456789abcdef"}}), 401U);
    EXPECT_EQ(check({{"authorization", "Bearer 0123456789abcdeF"}}), 401U);
    EXPECT_EQ(check({{"authorization", "Bearer"}}), 401U);
    EXPECT_EQ(check({{"authorization", "bearer  0123456789abcdef "}}), 200U);
    Guard open("");
    EXPECT_NO_THROW(open.CheckToken(MakeRequest({})));
}

TEST(Guard, HearsAnAddressNoMoreAfterTooManyWrongTokens) {
    std::chrono::steady_clock::time_point now{};
    Guard guard(Token, [&now] { return now; });
    auto const check = [&](char const* token, char const* client) {
        Request request = MakeRequest({{"authorization", std::string("Bearer ") + token}});
        request.client = client;
        return GetStatus([&] { guard.CheckToken(request); });
    };
    for (std::size_t i = 0; i < Guard::MaxFailures; ++i) EXPECT_EQ(check("wrong", "10.0.0.1"), 401U);
    EXPECT_EQ(check("wrong", "10.0.0.1"), 429U);
    // Whoever guesses learns nothing by guessing right.
    EXPECT_EQ(check(Token, "10.0.0.1"), 429U);
    EXPECT_EQ(check(Token, "10.0.0.2"), 200U);
    now += Guard::FailureTime + std::chrono::seconds(1);
    EXPECT_EQ(check(Token, "10.0.0.1"), 200U);
}

TEST(Guard, KeepsSessions) {
    std::chrono::steady_clock::time_point now{};
    Guard guard(Token, [&now] { return now; });
    Request const visitor = MakeRequest({{"host", "localhost:8080"}});
    EXPECT_EQ(GetStatus([&] { guard.SignIn(visitor, "wrong"); }), 401U);
    std::string const cookie = guard.SignIn(visitor, Token);
    EXPECT_TRUE(cookie.starts_with("qel_session_8080=")) << cookie;
    EXPECT_TRUE(cookie.ends_with("; Path=/; Max-Age=43200; HttpOnly; SameSite=Strict")) << cookie;

    std::string const pair = cookie.substr(0, cookie.find(';'));
    Request const known = MakeRequest({{"host", "localhost:8080"}, {"cookie", pair}});
    EXPECT_NO_THROW(guard.CheckToken(known));
    now += Guard::SessionTime - std::chrono::seconds(1);
    EXPECT_NO_THROW(guard.CheckToken(known));
    now += Guard::SessionTime + std::chrono::seconds(1);
    EXPECT_EQ(GetStatus([&] { guard.CheckToken(known); }), 401U);

    std::string const second = guard.SignIn(visitor, Token);
    Request const again = MakeRequest({{"host", "localhost:8080"}, {"cookie", second.substr(0, second.find(';'))}});
    EXPECT_NO_THROW(guard.CheckToken(again));
    EXPECT_EQ(guard.SignOut(again), "qel_session_8080=; Path=/; Max-Age=0; HttpOnly; SameSite=Strict");
    EXPECT_EQ(GetStatus([&] { guard.CheckToken(again); }), 401U);
}

TEST(Guard, ForgetsTheSessionThatWasUsedLongestAgo) {
    std::chrono::steady_clock::time_point now{};
    Guard guard(Token, [&now] { return now; });
    Request const visitor = MakeRequest({{"host", "localhost"}});
    auto const begin = [&] {
        now += std::chrono::seconds(1);
        std::string const cookie = guard.SignIn(visitor, Token);
        return MakeRequest({{"host", "localhost"}, {"cookie", cookie.substr(0, cookie.find(';'))}});
    };
    Request const first = begin();
    Request const second = begin();
    now += std::chrono::seconds(1);
    EXPECT_NO_THROW(guard.CheckToken(first));
    for (std::size_t i = 2; i <= Guard::MaxSessions; ++i) begin();
    EXPECT_NO_THROW(guard.CheckToken(first));
    EXPECT_EQ(GetStatus([&] { guard.CheckToken(second); }), 401U);
}

class ReadToken : public testing::Test {
protected:
    std::string Write(std::string const& text, mode_t mode = 0600) {
        std::string const file = (folder_.GetPath() / "token").string();
        std::ofstream(file) << text;
        chmod(file.c_str(), mode);
        return file;
    }

    test::TemporaryDirectory folder_;
};

TEST_F(ReadToken, TakesTheFirstLine) {
    EXPECT_EQ(http::ReadToken(Write("0123456789abcdef\nand more")), Token);
    EXPECT_EQ(http::ReadToken(Write("0123456789abcdef\r\n")), Token);
    EXPECT_EQ(http::ReadToken(Write("0123456789abcdef")), Token);
}

TEST_F(ReadToken, RefusesWhatOthersKnowOrGuess) {
    auto const message = [](std::string const& file) {
        return test::MessageOf<host::UsageError>([&] { http::ReadToken(file); });
    };
    std::string const file = Write("0123456789abcdef", 0644);
    EXPECT_EQ(message(file), "the token file '" + file + "' can be read or changed by other users: chmod 600 it");
    std::string const few =
        "the token file '" + file +
        "' holds no token of 16 to 1024 characters in its first line: openssl rand -hex 32 makes one";
    chmod(file.c_str(), 0600);
    EXPECT_EQ(message(Write("0123456789abcde\n")), few);
    EXPECT_EQ(message(Write("")), few);
    EXPECT_EQ(message(Write(std::string(5000, 'a'))), few);
    EXPECT_EQ(message(Write("0123456789 abcdef")),
              "the token file '" + file + "' holds characters that are not visible ASCII");
    EXPECT_EQ(message("/nowhere"), "the token file '/nowhere' cannot be read: No such file or directory");
    EXPECT_EQ(message("/"), "the token file '/' is no file");
}

}  // namespace
}  // namespace qel::serve::http
