#include "service.hpp"

#include <thread>

#include <gmock/gmock.h>

#include "serve/api/service_fixture.hpp"

namespace qel::serve {
namespace {

using namespace std::chrono_literals;
using http::Answer;
using http::Client;
using http::MakeRequest;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(ServiceTest, TellsTheConfigurationAndItsSchema) {
    Begin();
    auto const all = Parse(Get("/api/config"));
    EXPECT_EQ(all.at("streams").at("gate").at("loop"), true);
    for (char const* const path : {"streams.gate", "streams/gate", "streams/gate/"}) {
        EXPECT_EQ(Parse(Get(std::string("/api/config/") + path)), all.at("streams").at("gate")) << path;
    }
    Answer const schema = Get("/api/schema/streams.gate.loop");
    EXPECT_EQ(schema.Get("content-type"), "application/schema+json");
    EXPECT_EQ(Parse(schema).at("type"), "boolean");
    EXPECT_EQ(Parse(Get("/api/schema")).at("$schema"), "https://json-schema.org/draft/2020-12/schema");
    EXPECT_EQ(ExpectProblem(Get("/api/config/streams/door"), 404),
              "there is nothing at 'streams.door' in the configuration");
    ExpectProblem(Get("/api/schema/streams.door"), 404);
}

TEST_F(ServiceTest, TellsWhatHasBeenSetApartFromWhatIsInEffect) {
    Begin();
    auto const settings = [this] {
        auto const gate = Parse(Get("/api/document")).at("streams").at("gate").as_object();
        auto const* const found = gate.if_contains("settings");
        return found == nullptr ? std::string("none") : boost::json::serialize(*found);
    };
    Send("PATCH", "/api/config", R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 5}}}}})");
    EXPECT_EQ(settings(), R"({"Threshold":{"threshold":5}})");
    Send("PATCH", "/api/config", R"({"streams": {"gate": {"settings": null}}})");
    EXPECT_EQ(settings(), "none");
    EXPECT_NE(Get("/api/config/streams.gate.settings.Threshold.threshold").body, "5");
}

TEST_F(ServiceTest, ChangesTheConfigurationOrRefusesTheChangeWhole) {
    Begin();
    Answer const changed =
        Send("PATCH", "/api/config", R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 5}}}}})");
    EXPECT_EQ(changed.status, 200U) << changed.body;
    EXPECT_EQ(changed.body, "{\"changed\":[\"streams.gate.settings.Threshold.threshold\"]}\n");
    EXPECT_EQ(Get("/api/config/streams.gate.settings.Threshold.threshold").body, "5");

    Answer const refused =
        Send("PATCH", "/api/config", R"({"streams": {"gate": {"loop": 7, "nonsense": 1, "enabled": false}}})");
    ExpectProblem(refused, 422);
    auto const faults = Parse(refused).at("faults").as_array();
    ASSERT_EQ(faults.size(), 2U) << refused.body;
    EXPECT_EQ(Get("/api/config/streams.gate.enabled").body, "true");

    EXPECT_THAT(ExpectProblem(Send("PATCH", "/api/config", "{\"streams\": }"), 400), HasSubstr("line 1, column 13"));
    EXPECT_EQ(ExpectProblem(Send("PATCH", "/api/config", "[1]"), 400), "the body is no JSON object");
    std::string deep;
    for (int i = 0; i < 100; ++i) deep += "{\"a\":";
    ExpectProblem(Send("PATCH", "/api/config", deep + "1" + std::string(100, '}')), 400);
    ExpectProblem(Send("PATCH", "/api/config", ""), 400);
    Answer const form = http::Ask(GetPort(), MakeRequest("PATCH", "/api/config", "Content-Type: text/plain\r\n", "{}"));
    ExpectProblem(form, 415);
    EXPECT_EQ(form.Get("accept-patch"), "application/merge-patch+json, application/json");
}

TEST_F(ServiceTest, AddsAndRemovesStreams) {
    Begin();
    Answer const added =
        Send("POST", "/api/streams", R"({"id": "door", "source": "gate.mkv", "algorithms": ["threshold"]})");
    EXPECT_EQ(added.status, 201U) << added.body;
    EXPECT_EQ(added.Get("location"), "/api/streams/door");
    EXPECT_EQ(Parse(added).at("id"), "door");
    EXPECT_EQ(Parse(Get("/api/streams")).at("streams").as_array().size(), 2U);
    EXPECT_EQ(Parse(Get("/api/streams/door")).at("id"), "door");

    EXPECT_EQ(ExpectProblem(Send("POST", "/api/streams", R"({"id": "door", "source": "x"})"), 409),
              "there is a stream 'door' already; PATCH /api/config changes it");
    Answer const nameless = Send("POST", "/api/streams", R"({"source": "gate.mkv"})");
    ExpectProblem(nameless, 422);
    EXPECT_EQ(Parse(nameless).at("faults").at(0).at("path"), "id");
    ExpectProblem(Send("POST", "/api/streams", R"({"id": "a/b", "source": "gate.mkv"})"), 422);
    ExpectProblem(Send("POST", "/api/streams", R"({"id": "a.b", "source": "gate.mkv"})"), 422);
    ExpectProblem(Send("POST", "/api/streams", R"({"id": "other", "algorithms": ["nonsense"]})"), 422);

    Answer const removed = http::Ask(GetPort(), MakeRequest("DELETE", "/api/streams/door"));
    EXPECT_EQ(removed.status, 204U);
    EXPECT_EQ(removed.body, "");
    ExpectProblem(Get("/api/streams/door"), 404);
    ExpectProblem(http::Ask(GetPort(), MakeRequest("DELETE", "/api/streams/door")), 404);
}

TEST_F(ServiceTest, ShowsPictures) {
    Begin();
    Answer const frame = Get("/api/streams/gate/frame.jpg?annotated=0&width=32");
    EXPECT_EQ(frame.status, 200U) << frame.body;
    EXPECT_EQ(frame.Get("content-type"), "image/jpeg");
    EXPECT_EQ(frame.Get("cache-control"), "no-store");
    EXPECT_THAT(frame.body, StartsWith("\xff\xd8\xff"));
    EXPECT_EQ(http::Ask(GetPort(), MakeRequest("HEAD", "/api/streams/gate/frame.jpg"), false).status, 200U);

    Client viewer(GetPort());
    viewer.Send(MakeRequest("GET", "/api/streams/gate/mjpeg"));
    std::string const head = viewer.ReceiveUntil("\r\n\r\n");
    EXPECT_THAT(head, HasSubstr("Content-Type: multipart/x-mixed-replace; boundary=qel\r\n"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(viewer.ReceiveUntil("\r\n--qel\r\n"), HasSubstr("--qel")) << i;
    }

    ExpectProblem(Get("/api/streams/door/frame.jpg"), 404);
    ExpectProblem(Get("/api/streams/door/mjpeg"), 404);
    for (char const* const query : {"annotated=yes", "width=0", "width=-1", "width=1e3", "width=9000", "quality=5"}) {
        ExpectProblem(Get(std::string("/api/streams/gate/frame.jpg?") + query), 400);
    }
}

TEST_F(ServiceTest, SaysWhyThereIsNoPicture) {
    test::WriteFile(folder_ / "config.json",
                    R"({"streams": {"gate": {"source": "nothing.mkv", "algorithms": ["threshold"]}}})");
    limits_.answerTime = 100ms;
    Begin();
    Answer const answer = Get("/api/streams/gate/frame.jpg");
    EXPECT_THAT(ExpectProblem(answer, 503), StartsWith("the stream 'gate' has no picture yet"));
}

TEST_F(ServiceTest, EndsThePicturesOfAStreamThatIsRemoved) {
    Begin();
    Client viewer(GetPort());
    viewer.Send(MakeRequest("GET", "/api/streams/gate/mjpeg"));
    viewer.ReceiveUntil("--qel");
    EXPECT_EQ(http::Ask(GetPort(), MakeRequest("DELETE", "/api/streams/gate")).status, 204U);
    EXPECT_TRUE(viewer.IsClosed());
}

TEST_F(ServiceTest, TellsOfWhatHappens) {
    Begin();
    Client all(GetPort()), changes(GetPort());
    all.Send(MakeRequest("GET", "/api/events?kinds=detection&streams=gate"));
    EXPECT_THAT(all.ReceiveUntil("event: detection\nid: "), HasSubstr("Content-Type: text/event-stream"));
    EXPECT_THAT(all.ReceiveUntil("\n\n\r\n"), HasSubstr("\"source\":\"gate\""));
    changes.Send(MakeRequest("GET", "/api/events?kinds=configuration"));
    changes.ReceiveUntil("retry: 2000");
    EXPECT_EQ(
        Send("PATCH", "/api/config", R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 9}}}}})").status,
        200U);
    std::string const event = "data: {\"changed\":[\"streams.gate.settings.Threshold.threshold\"]}\n\n";
    EXPECT_THAT(changes.ReceiveUntil(event), HasSubstr(event));
    ExpectProblem(Get("/api/events?kinds=weather"), 400);
    ExpectProblem(Get("/api/events?kind=detection"), 400);
}

TEST_F(ServiceTest, TellsAReaderOfEventsWhatItHasLost) {
    Begin();
    Client client(GetPort());
    client.Send(MakeRequest("GET", "/api/events?kinds=model"));
    client.ReceiveUntil("retry: 2000");
    // More than sockets and queues hold together, as nothing is read meanwhile.
    std::string const data = "\"" + std::string(64U << 10, 'x') + "\"";
    for (int i = 0; i < 1000; ++i) service_->GetBus().Publish({.kind = "model", .stream = {}, .data = data});
    EXPECT_THAT(client.ReceiveUntil("event: lost\ndata: {\"count\":"), HasSubstr("event: lost"));
}

TEST_F(ServiceTest, FindsHowACameraIsMounted) {
    Begin();
    std::string const references = std::string("{") + References;
    auto const answer = Parse(Send("POST", "/api/calibrate", references + "}"));
    EXPECT_GT(answer.at("calibration").at("height_m").to_number<double>(), 1);
    EXPECT_EQ(answer.at("residuals").as_array().size(), 3U);
    EXPECT_EQ(answer.at("residuals").at(2).at("kind"), "vertical");
    EXPECT_EQ(answer.at("standard_errors").at("roll").to_number<double>(), 0);
    EXPECT_FALSE(answer.at("grid").as_array().empty());

    Answer const few = Send("POST", "/api/calibrate",
                            R"({"size": [768, 576], "ground": [{"from": [1, 385], "to": [562, 349], "metres": 7}]})");
    EXPECT_EQ(ExpectProblem(few, 422), "the references do not determine the camera");
    EXPECT_FALSE(Parse(few).at("faults").as_array().empty());
    std::string many;
    for (int i = 0; i < 33; ++i) {
        many += (i == 0 ? "" : ", ") + std::string(R"({"from": [1, 300], "to": [)") + std::to_string(100 + i) +
                R"(, 400], "metres": 2})";
    }
    EXPECT_THAT(ExpectProblem(Send("POST", "/api/calibrate", R"({"size": [768, 576], "ground": [)" + many + "]}"), 422),
                StartsWith("there are more than 32 references"));
    EXPECT_THAT(ExpectProblem(Send("POST", "/api/calibrate", R"({"size": [768]})"), 422), HasSubstr("the references"));
    ExpectProblem(Send("POST", "/api/calibrate", references + R"(, "save": true})"), 422);
    ExpectProblem(Send("POST", "/api/calibrate", references + R"(, "save": 1, "stream": 2})"), 422);
    ExpectProblem(Send("POST", "/api/calibrate", references + R"(, "save": true, "stream": "door"})"), 422);
}

TEST_F(ServiceTest, SavesACalibrationForAStream) {
    Begin();
    std::string const body = std::string("{") + References + R"(, "save": true, "stream": "gate"})";
    EXPECT_EQ(Parse(Send("POST", "/api/calibrate", body)).at("saved"), "gate.calibration.json");
    EXPECT_EQ(Get("/api/config/streams.gate.calibration").body, "\"gate.calibration.json\"");
    EXPECT_THAT(test::ReadFile(folder_ / "gate.calibration.json"), HasSubstr("height_m"));
    test::WriteFile(folder_ / "gate.calibration.json", "");
    EXPECT_EQ(Parse(Send("POST", "/api/calibrate", body)).at("saved"), "gate.calibration.json");
    EXPECT_THAT(test::ReadFile(folder_ / "gate.calibration.json"), HasSubstr("height_m"));
}

TEST_F(ServiceTest, TellsOfItself) {
    Begin();
    auto const information = Parse(Get("/api/info"));
    EXPECT_EQ(information.at("version"), "1.2.3");
    EXPECT_TRUE(information.at("safe_mode").is_null());
    EXPECT_EQ(information.at("token_required"), false);
    EXPECT_GE(information.at("uptime_seconds").to_number<double>(), 0);
    EXPECT_EQ(Get("/live").body, "{\"status\":\"live\"}\n");
    EXPECT_EQ(Get("/ready").body, "{\"status\":\"ready\"}\n");
    auto const algorithms = Parse(Get("/api/algorithms")).at("algorithms").as_array();
    ASSERT_EQ(algorithms.size(), 3U);
    EXPECT_EQ(algorithms[2].at("name"), "Threshold");
    EXPECT_EQ(algorithms[2].at("properties").as_object().contains("threshold"), true);
    EXPECT_EQ(Get("/").body, "<p>the page");
    ExpectProblem(Get("/nothing.js"), 404);
    ExpectProblem(Get("/api/nothing"), 404);
    ExpectProblem(http::Ask(GetPort(), MakeRequest("PUT", "/api/nothing")), 404);
}

TEST_F(ServiceTest, CountsWhatItDoes) {
    Begin();
    Get("/live");
    Get("/nothing");
    http::Ask(GetPort(), MakeRequest("BREW", "/live"));
    Answer const metrics = Get("/metrics");
    EXPECT_EQ(metrics.Get("content-type"), "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_THAT(metrics.body, HasSubstr("qel_http_requests_total{method=\"GET\",route=\"/live\",status=\"2xx\"} 1\n"));
    EXPECT_THAT(metrics.body,
                HasSubstr("qel_http_requests_total{method=\"GET\",route=\"/{path...}\",status=\"4xx\"} 1\n"));
    EXPECT_THAT(metrics.body, HasSubstr("qel_http_requests_total{method=\"other\",route=\"none\",status=\"4xx\"} 1\n"));
    EXPECT_THAT(metrics.body, HasSubstr("\nqel_http_connections "));
    EXPECT_THAT(metrics.body, HasSubstr("\nqel_events_lost_total 0\n"));
    EXPECT_THAT(metrics.body, HasSubstr("{stream=\"gate\""));
}

TEST_F(ServiceTest, ServesABrokenConfigurationInSafeMode) {
    test::WriteFile(folder_ / "config.json", "{\"streams\": }");
    Begin();
    EXPECT_THAT(warnings_, HasSubstr("line 1, column 13"));
    EXPECT_THAT(std::string(Parse(Get("/api/info")).at("safe_mode").as_string()), HasSubstr("line 1, column 13"));
}

TEST_F(ServiceTest, AsksForItsToken) {
    Begin("0123456789abcdef");
    for (char const* const open : {"/", "/live", "/ready", "/api/openapi.json"})
        EXPECT_EQ(Get(open).status, 200U) << open;
    for (char const* const closed : {"/api/config", "/api/info", "/api/streams", "/api/events", "/metrics",
                                     "/api/streams/gate/frame.jpg", "/api/streams/gate/mjpeg"}) {
        ExpectProblem(Get(closed), 401);
        EXPECT_THAT(Get(closed).Get("www-authenticate"), StartsWith("Bearer")) << closed;
    }
    EXPECT_EQ(Get("/api/info", "Authorization: Bearer 0123456789abcdef\r\n").status, 200U);
    ExpectProblem(Get("/api/info", "Authorization: Bearer 0123456789abcdeX\r\n"), 401);

    ExpectProblem(Send("POST", "/api/session", R"({"token": "wrong"})"), 401);
    ExpectProblem(Send("POST", "/api/session", R"({"token": 1})"), 422);
    Answer const session = Send("POST", "/api/session", R"({"token": "0123456789abcdef"})");
    EXPECT_EQ(session.status, 204U);
    std::string const cookie = session.Get("set-cookie");
    std::string const header = "Cookie: " + cookie.substr(0, cookie.find(';')) + "\r\n";
    EXPECT_EQ(Get("/api/streams/gate/frame.jpg", header).status, 200U);
    EXPECT_EQ(Parse(Get("/api/info", header)).at("token_required"), true);
    http::Ask(GetPort(), MakeRequest("DELETE", "/api/session", header));
    ExpectProblem(Get("/api/info", header), 401);
}

TEST_F(ServiceTest, EndsWhileItIsLookedAt) {
    Begin();
    Client viewer(GetPort()), reader(GetPort());
    viewer.Send(MakeRequest("GET", "/api/streams/gate/mjpeg"));
    reader.Send(MakeRequest("GET", "/api/events"));
    viewer.ReceiveUntil("--qel");
    reader.ReceiveUntil("event: ");
    service_.reset();
    EXPECT_TRUE(viewer.IsClosed());
    EXPECT_TRUE(reader.IsClosed());
}

}  // namespace
}  // namespace qel::serve
