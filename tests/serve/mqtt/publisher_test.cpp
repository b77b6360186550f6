// With a real broker, which is stopped, killed and frozen on the way.
#include "mqtt/publisher.hpp"

#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>
#include <prometheus/registry.h>

#include "broker.hpp"
#include "error.hpp"
#include "subscriber.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using qel::test::TemporaryDirectory;
using std::chrono::milliseconds;
using test::Broker;
using test::Received;
using test::Subscriber;

Publisher::Options MakeOptions(unsigned short port, TemporaryDirectory const& folder) {
    Publisher::Options options;
    options.broker.host = "127.0.0.1";
    options.broker.port = port;
    options.spool = folder / "spool";
    options.firstPause = milliseconds(50);
    options.longestPause = milliseconds(400);
    return options;
}

bool Becomes(std::function<bool()> const& condition) {
    for (int i = 0; i < 6000; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(milliseconds(10));
    }
    return false;
}

/// The metric's value; labels are told apart by their value.
double GetMetric(prometheus::Registry const& registry, std::string const& name, std::string const& label = "") {
    for (auto const& family : registry.Collect()) {
        for (auto const& metric : family.metric) {
            bool const labelled = label.empty() || (!metric.label.empty() && metric.label[0].value == label);
            if (family.name != name || !labelled) continue;
            return family.type == prometheus::MetricType::Gauge ? metric.gauge.value : metric.counter.value;
        }
    }
    return -1;
}

std::string MakeLine(int i) { return R"({"frame":)" + std::to_string(i) + R"(,"source":"a.avi","objects":[]})"; }

/// Expects the lines 0 to count - 1 in order, each once, in turn of the streams "even" and "odd".
void ExpectAll(std::vector<Received> const& messages, int count) {
    ASSERT_EQ(messages.size(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        Received const& message = messages[static_cast<std::size_t>(i)];
        ASSERT_EQ(message.payload, MakeLine(i));
        ASSERT_EQ(message.topic, i % 2 == 0 ? "qel/even/detections" : "qel/odd/detections");
        ASSERT_EQ(message.number, std::to_string(i + 1));
        ASSERT_EQ(message.run, messages[0].run);
    }
}

void PublishLine(Publisher& publisher, int i) { publisher.Publish(i % 2 == 0 ? "even" : "odd", MakeLine(i)); }

TEST(Publisher, PublishesEachLineOnceAndInOrderWhileTheBrokerIsStoppedAndStartedAgain) {
    constexpr int Lines = 5000;
    constexpr int Outages = 4;
    Broker broker;
    TemporaryDirectory const folder;
    Subscriber const subscriber(broker.GetPort(), "qel/+/detections");
    prometheus::Registry metrics;
    Publisher publisher(MakeOptions(broker.GetPort(), folder), metrics);
    std::atomic<int> published = 0;
    std::thread writer([&] {
        for (int i = 0; i < Lines; ++i) {
            PublishLine(publisher, i);
            published = i + 1;
            if (i % 20 == 0) std::this_thread::sleep_for(milliseconds(12));
        }
    });
    for (int outage = 1; outage <= Outages; ++outage) {
        Becomes([&] { return published >= outage * Lines / (Outages + 1) && publisher.IsConnected(); });
        broker.Stop();
        std::this_thread::sleep_for(milliseconds(200));
        broker.Start();
    }
    writer.join();
    ExpectAll(subscriber.WaitFor(Lines), Lines);
    // The subscriber has a message before the publisher hears that it is complete, and the spool is counted once a
    // second.
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_published_messages_total") >= Lines; }));
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_spool_messages") == 0; }));
    EXPECT_EQ(GetMetric(metrics, "qel_mqtt_published_messages_total"), Lines);
    EXPECT_EQ(GetMetric(metrics, "qel_mqtt_lost_messages_total", "spool"), 0);
    EXPECT_EQ(GetMetric(metrics, "qel_mqtt_lost_messages_total", "refused"), 0);
    EXPECT_GE(GetMetric(metrics, "qel_mqtt_reconnects_total"), Outages);
    EXPECT_EQ(GetMetric(metrics, "qel_mqtt_connected"), 1);
}

TEST(Publisher, PublishesEachLineOnceAndInOrderThoughTheBrokerWasKilledAfterStoring) {
    // The broker stores each change; what it has not stored when it is killed nobody else knows of.
    Broker broker({"allow_anonymous true", "autosave_on_changes true", "autosave_interval 1"});
    TemporaryDirectory const folder;
    Subscriber const subscriber(broker.GetPort(), "qel/+/detections");
    prometheus::Registry metrics;
    Publisher publisher(MakeOptions(broker.GetPort(), folder), metrics);
    for (int i = 0; i < 100; ++i) PublishLine(publisher, i);
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_published_messages_total") == 100; }));
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_spool_messages") == 0; }));
    subscriber.WaitFor(100);
    broker.WaitUntilStored();
    broker.Kill();
    for (int i = 100; i < 400; ++i) PublishLine(publisher, i);
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_spool_messages") == 300; }));
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_connected") == 0; }));
    EXPECT_GT(GetMetric(metrics, "qel_mqtt_spool_bytes"), 300 * 40);
    broker.Start();
    for (int i = 400; i < 500; ++i) PublishLine(publisher, i);
    ExpectAll(subscriber.WaitFor(500), 500);
}

TEST(Publisher, SendsAgainWhatWasOnItsWayWhenTheBrokerHasForgottenTheSession) {
    Broker broker({"allow_anonymous true", "autosave_on_changes true", "autosave_interval 1"});
    TemporaryDirectory const folder;
    Subscriber const subscriber(broker.GetPort(), "qel/+/detections");
    prometheus::Registry metrics;
    Publisher publisher(MakeOptions(broker.GetPort(), folder), metrics);
    for (int i = 0; i < 10; ++i) PublishLine(publisher, i);
    subscriber.WaitFor(10);
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_published_messages_total") == 10; }));
    broker.WaitUntilStored();
    broker.Freeze();
    for (int i = 10; i < 100; ++i) PublishLine(publisher, i);
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_spool_messages") == 90; }));
    broker.Kill();
    broker.ForgetClient("qel-" + qel::test::ReadFile(folder / "spool/id"));
    broker.Start();
    ExpectAll(subscriber.WaitFor(100), 100);
}

TEST(Publisher, GoesOnInTheNextProcessWithWhatTheLastOneLeft) {
    TemporaryDirectory const folder;
    Broker broker;
    Subscriber const subscriber(broker.GetPort(), "qel/+/detections");
    {
        prometheus::Registry metrics;
        Publisher::Options options = MakeOptions(1, folder);  // nobody listens there
        Publisher publisher(options, metrics);
        for (int i = 0; i < 50; ++i) PublishLine(publisher, i);
    }
    prometheus::Registry metrics;
    {
        Publisher publisher(MakeOptions(broker.GetPort(), folder), metrics);
        EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_published_messages_total") == 50; }));
        publisher.Publish("later", MakeLine(50));
    }
    auto const messages = subscriber.WaitFor(51);
    ASSERT_EQ(messages.size(), 51U) << "the last line goes out before the publisher ends";
    EXPECT_EQ(messages[50].topic, "qel/later/detections");
    EXPECT_EQ(messages[50].number, "51");
    EXPECT_NE(messages[50].run, messages[49].run);
    EXPECT_EQ(GetMetric(metrics, "qel_mqtt_published_messages_total"), 51);
}

TEST(Publisher, SaysWhetherItIsThereAndPublishesOnvifMetadataWhereAsked) {
    Broker broker;
    TemporaryDirectory const folder;
    {
        Subscriber const subscriber(broker.GetPort(), "site/#");
        prometheus::Registry metrics;
        Publisher::Options options = MakeOptions(broker.GetPort(), folder);
        options.broker.prefix = "site/north";
        options.onvif = true;
        {
            Publisher publisher(options, metrics);
            publisher.Publish("gate", MakeLine(1) + "\n");
            auto const messages = subscriber.WaitFor(3);
            ASSERT_EQ(messages.size(), 3U);
            EXPECT_EQ(messages[0].topic, "site/north/status");
            EXPECT_EQ(messages[0].payload, "online");
            EXPECT_EQ(messages[1].topic, "site/north/gate/detections");
            EXPECT_EQ(messages[1].payload, MakeLine(1)) << "without its line end";
            EXPECT_EQ(messages[2].topic, "site/north/gate/onvif");
            EXPECT_TRUE(messages[2].payload.starts_with(R"({"Frame":[{"@UtcTime":"20)")) << messages[2].payload;
            EXPECT_EQ(messages[2].number, messages[1].number);
            Subscriber const late(broker.GetPort(), "site/north/status", "late");
            EXPECT_EQ(late.WaitFor(1).at(0).payload, "online");
            EXPECT_TRUE(late.WaitFor(1).at(0).retained);
        }
        EXPECT_EQ(subscriber.WaitFor(4).at(3).payload, "offline");
    }
}

TEST(Publisher, LosesTheOldestLinesWhenItsSpoolIsFullAndCountsThem) {
    TemporaryDirectory const folder;
    prometheus::Registry metrics;
    Publisher::Options options = MakeOptions(1, folder);
    options.spoolBytes = 16 * 1024;
    Publisher publisher(options, metrics);
    for (int i = 0; i < 1000; ++i) PublishLine(publisher, i);
    EXPECT_TRUE(Becomes([&] {
        return GetMetric(metrics, "qel_mqtt_lost_messages_total", "spool") +
                   GetMetric(metrics, "qel_mqtt_spool_messages") ==
               1000;
    }));
    EXPECT_GT(GetMetric(metrics, "qel_mqtt_lost_messages_total", "spool"), 0);
    EXPECT_LE(GetMetric(metrics, "qel_mqtt_spool_bytes"), 16 * 1024);
}

TEST(Publisher, CountsWhatTheBrokerRefusesAndGoesOn) {
    TemporaryDirectory const folder;
    qel::test::WriteFile(folder / "acl", "topic readwrite qel/even/#\ntopic readwrite qel/status\n");
    std::filesystem::permissions(folder / "acl", std::filesystem::perms::owner_all);
    Broker broker({"allow_anonymous true", "acl_file " + (folder / "acl")});
    Subscriber const subscriber(broker.GetPort(), "qel/even/detections");
    prometheus::Registry metrics;
    Publisher publisher(MakeOptions(broker.GetPort(), folder), metrics);
    for (int i = 0; i < 10; ++i) PublishLine(publisher, i);
    EXPECT_EQ(subscriber.WaitFor(5).size(), 5U);
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_lost_messages_total", "refused") == 5; }));
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_published_messages_total") == 5; }));
    EXPECT_TRUE(Becomes([&] { return GetMetric(metrics, "qel_mqtt_spool_messages") == 0; }));
}

TEST(Publisher, SaysWhichSpoolCannotBeUsed) {
    TemporaryDirectory const folder;
    qel::test::WriteFile(folder / "spool", "a file");
    prometheus::Registry metrics;
    EXPECT_EQ(qel::test::MessageOf<host::Error>([&] {
                  Publisher publisher(MakeOptions(1, folder), metrics);
              }).starts_with("cannot make the folder '" + folder / "spool" + "'"),
              true);
}

}  // namespace
}  // namespace qel::serve::mqtt
