#pragma once

#include <optional>
#include <string>

#include <boost/filesystem/operations.hpp>
#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "serve/http/client.hpp"
#include "service.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::serve {

/// A server with one stream, "gate", in which a square moves over and over.
class ServiceTest : public testing::Test {
protected:
    ServiceTest() {
        test::WriteMovingSquare(folder_ / "gate.mkv", {.framesPerSecond = 50});
        test::WriteFile(folder_ / "config.json",
                        R"({"streams": {"gate": {"source": "gate.mkv", "loop": true, "algorithms": ["threshold"]}}})");
        boost::filesystem::create_directory(folder_ / "page");
        test::WriteFile(folder_ / "page/index.html", "<p>the page");
    }

    void Begin(std::string const& token = "") {
        Service::Options options;
        options.configuration = folder_ / "config.json";
        options.token = token;
        options.assets = folder_ / "page";
        options.version = "1.2.3";
        options.limits = limits_;
        service_.emplace(runtime_, options, [this](std::string const& warning) { warnings_ += warning + "\n"; });
    }

    std::uint16_t GetPort() const { return service_->GetEndpoint().port; }

    http::Answer Get(std::string const& target, std::string const& headers = "") const {
        return http::Ask(GetPort(), http::MakeRequest("GET", target, headers));
    }

    http::Answer Send(std::string const& method, std::string const& target, std::string const& body) const {
        return http::Ask(GetPort(), http::MakeRequest(method, target, "Content-Type: application/json\r\n", body));
    }

    static boost::json::value Parse(http::Answer const& answer) { return boost::json::parse(answer.body); }

    test::TemporaryDirectory folder_;
    std::string warnings_;
    http::Limits limits_;
    host::Runtime runtime_;
    std::optional<Service> service_;
};

/// Checks status and form of a problem document; returns its detail.
inline std::string ExpectProblem(http::Answer const& answer, unsigned int status) {
    EXPECT_EQ(answer.status, status) << answer.body;
    EXPECT_EQ(answer.Get("content-type"), "application/problem+json");
    boost::system::error_code error;
    auto const document = boost::json::parse(answer.body, error);
    if (error || !document.is_object()) return "no problem document";
    EXPECT_EQ(document.at("status").to_number<unsigned int>(), status);
    return std::string(document.at("detail").as_string());
}

/// Two lengths on the ground and one upright one, which determine a camera with two fixed parameters.
inline constexpr char References[] =
    R"("size": [768, 576], "ground": [{"from": [141, 385], "to": [562, 349], "metres": 7.1},
       {"from": [562, 349], "to": [526, 186], "metres": 13.0}], "vertical": [{"foot": [278, 321], "top": [278, 230],
       "metres": 1.75, "tolerance": 0.05}], "fixed": {"roll": 0, "vertical_fov": 27.3})";

}  // namespace qel::serve
