// A whole server that publishes to a broker, and what it counts.
#include <chrono>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

#include "broker.hpp"
#include "error.hpp"
#include "serve/api/service_fixture.hpp"
#include "subscriber.hpp"

namespace qel::serve {
namespace {

using mqtt::test::Broker;
using mqtt::test::Subscriber;

class ServiceBroker : public ServiceTest {
protected:
    /// A server that publishes, with ONVIF metadata.
    void BeginPublishing(unsigned short port) {
        Service::Options options;
        options.configuration = folder_ / "config.json";
        options.assets = folder_ / "page";
        options.broker.emplace();
        options.broker->broker.host = "127.0.0.1";
        options.broker->broker.port = port;
        options.broker->onvif = true;
        options.broker->spool = folder_ / "spool";
        options.broker->firstPause = std::chrono::milliseconds(50);
        service_.emplace(runtime_, options, [](std::string const&) {});
    }
};

TEST_F(ServiceBroker, PublishesEachLineOfItsStreams) {
    Broker broker;
    Subscriber const lines(broker.GetPort(), "qel/gate/detections", "lines");
    Subscriber const frames(broker.GetPort(), "qel/gate/onvif", "frames");
    BeginPublishing(broker.GetPort());
    auto const first = lines.WaitFor(30);
    broker.Stop();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    broker.Start();
    auto const all = lines.WaitFor(first.size() + 50);
    ASSERT_GE(all.size(), first.size() + 50);
    for (std::size_t i = 0; i < all.size(); ++i) {
        auto const line = boost::json::parse(all[i].payload);
        ASSERT_EQ(line.at("frame").to_number<std::size_t>(), i) << "from the first frame on, and none is missing";
        ASSERT_EQ(line.at("source"), "gate");
    }
    for (auto const& frame : frames.WaitFor(80)) {
        ASSERT_TRUE(frame.payload.starts_with(R"({"Frame":[{"@UtcTime":)")) << frame.payload;
    }
}

TEST_F(ServiceBroker, FailsToStartWhereLinesCannotBeKept) {
    test::WriteFile(folder_ / "spool", "a file");
    EXPECT_THROW(BeginPublishing(1), host::Error);
}

TEST_F(ServiceBroker, CountsInAWayThatPromtoolFindsNothingWrongWith) {
    Broker broker;
    Subscriber const lines(broker.GetPort(), "qel/gate/detections");
    BeginPublishing(broker.GetPort());
    lines.WaitFor(10);
    // So that every metric has something to tell.
    EXPECT_EQ(Get("/api/streams/gate/frame.jpg").status, 200U);
    EXPECT_EQ(Get("/api/streams").status, 200U);
    EXPECT_EQ(Get("/nothing").status, 404U);
    auto const answer = Get("/metrics");
    ASSERT_EQ(answer.status, 200U);
    for (char const* name : {"qel_stream_frames_total", "qel_stream_stage_seconds_bucket", "qel_http_",
                             "qel_mqtt_published_messages_total", "qel_mqtt_spool_bytes"}) {
        EXPECT_NE(answer.body.find(name), std::string::npos) << name;
    }
    test::WriteFile(folder_ / "metrics", answer.body);
    std::string const command =
        std::string(QEL_PROMTOOL) + " check metrics < " + (folder_ / "metrics") + " > " + (folder_ / "found") + " 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(test::ReadFile(folder_ / "found"), "");
}

}  // namespace
}  // namespace qel::serve
