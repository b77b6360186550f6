#include "http/assets.hpp"

#include <fstream>

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "error.hpp"
#include "http/problem.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::http {
namespace {

class Page : public testing::Test {
protected:
    Page() {
        boost::filesystem::create_directories(root_ / "assets");
        Write("index.html", "<p>hello");
        Write("assets/main-1a2b.js", "alert");
        Write("empty.txt", "");
        Write(".hidden", "secret");
        std::ofstream((folder_.GetPath() / "secret.txt").string()) << "secret";
    }

    void Write(std::string const& file, std::string const& text) { std::ofstream((root_ / file).string()) << text; }

    /// What the page's folder gives; the body is read from the stream.
    Response Get(std::string const& path, std::string const& known = "") {
        Request request;
        if (!known.empty()) request.headers.emplace_back("if-none-match", known);
        Response response = Assets(root_).Get(request, path);
        while (response.stream) {
            auto piece = response.stream->Next(false);
            if (!piece) break;
            response.body += *piece;
        }
        return response;
    }

    unsigned int GetStatus(std::string const& path) {
        try {
            return Get(path).status;
        } catch (Problem const& problem) {
            return problem.GetStatus();
        }
    }

    test::TemporaryDirectory folder_;
    boost::filesystem::path root_ = boost::filesystem::path(folder_.GetPath().string()) / "page";
};

std::string GetHeader(Response const& response, std::string const& name) {
    for (auto const& [header, value] : response.headers) {
        if (header == name) return value;
    }
    return {};
}

TEST_F(Page, IsServedWithTypesAndHowLongItKeeps) {
    Response const index = Get("");
    EXPECT_EQ(index.status, 200U);
    EXPECT_EQ(index.contentType, "text/html; charset=utf-8");
    EXPECT_EQ(index.body, "<p>hello");
    EXPECT_EQ(index.streamSize, 8U);
    EXPECT_EQ(GetHeader(index, "Cache-Control"), "no-cache");
    Response const script = Get("assets/main-1a2b.js");
    EXPECT_EQ(script.contentType, "text/javascript; charset=utf-8");
    EXPECT_EQ(GetHeader(script, "Cache-Control"), "public, max-age=31536000, immutable");
    EXPECT_EQ(Get("empty.txt").body, "");
}

TEST_F(Page, IsNotSentAgainWhileItIsTheSame) {
    std::string const tag = GetHeader(Get(""), "ETag");
    EXPECT_EQ(Get("", tag).status, 304U);
    EXPECT_EQ(Get("", "\"other\", W/" + tag).status, 304U);
    EXPECT_EQ(Get("", "*").status, 304U);
    EXPECT_EQ(Get("", "\"other\"").status, 200U);
    Write("index.html", "<p>hello again");
    EXPECT_EQ(Get("", tag).status, 200U);
}

TEST_F(Page, LeadsNowhereElse) {
    boost::filesystem::create_symlink(folder_ / "secret.txt", root_ / "link.txt");
    boost::filesystem::create_directory_symlink(folder_.GetPath().string(), root_ / "up");
    ASSERT_EQ(mkfifo((root_ / "pipe.txt").c_str(), 0600), 0);
    for (char const* const path : {"../secret.txt", "assets/../../secret.txt", "link.txt", "up/secret.txt", ".hidden",
                                   ".", "..", "assets", "assets/", "/etc/passwd", "//etc/passwd", "..\\secret.txt",
                                   "pipe.txt", "nothing", "index.html/x", "assets//main-1a2b.js"}) {
        EXPECT_EQ(GetStatus(path), 404U) << path;
    }
    EXPECT_EQ(GetStatus(std::string("index.html\0.js", 14)), 404U);
    EXPECT_EQ(GetStatus(std::string(5000, 'a')), 404U);
}

/// What a person is told who wants to see the page of that folder.
std::string GetReason(boost::filesystem::path const& folder) {
    try {
        Assets(folder).Get({}, "");
    } catch (Problem const& problem) {
        EXPECT_EQ(problem.GetStatus(), 404U);
        return problem.what();
    }
    return "";
}

TEST(Assets, SayWhenThereAreNone) {
    std::string const reason =
        "the page is not installed: name its folder with --assets, or build it (target qel_page); "
        "/api/openapi.json tells what there is besides";
    EXPECT_EQ(GetReason({}), reason);
    // As in a build tree whose page has not been built.
    test::TemporaryDirectory const empty;
    EXPECT_EQ(GetReason(empty.GetPath().string()), reason);
    EXPECT_THROW(Assets({}).Get({}, "main.js"), Problem);
    EXPECT_THROW(Assets("/nowhere"), host::UsageError);
}

TEST(GetMediaType, GoesByTheEndOfTheName) {
    EXPECT_EQ(GetMediaType("a.CSS"), "text/css; charset=utf-8");
    EXPECT_EQ(GetMediaType("a.svg"), "image/svg+xml");
    EXPECT_EQ(GetMediaType("a.b.woff2"), "font/woff2");
    EXPECT_EQ(GetMediaType("a"), "application/octet-stream");
}

}  // namespace
}  // namespace qel::serve::http
