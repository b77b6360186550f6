// With a real broker: what lies in the spool goes out, each line once, whatever lies between.
#include "mqtt/deliveries.hpp"

#include <thread>

#include <gtest/gtest.h>
#include <prometheus/registry.h>

#include "broker.hpp"
#include "mqtt/spooled_line.hpp"
#include "subscriber.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using namespace std::chrono_literals;
using qel::test::TemporaryDirectory;
using test::Broker;
using test::Subscriber;

double GetRefused(prometheus::Registry const& registry) {
    for (auto const& family : registry.Collect()) {
        if (family.name != "qel_mqtt_lost_messages_total") continue;
        for (auto const& metric : family.metric) {
            if (metric.label[0].value == "refused") return metric.counter.value;
        }
    }
    return -1;
}

/// A connection whose messages are completed by deliveries.
class Connection : public Client::Listener {
public:
    Connection(BrokerAddress const& address, Deliveries& deliveries)
        : deliveries_(deliveries), client_(address, "deliveries", Client::Session::Fresh, {}, *this) {
        client_.Open();
        for (int i = 0; i < 6000 && !client_.IsConnected(); ++i) Serve();
        EXPECT_TRUE(client_.IsConnected());
    }
    void OnConnected(bool /*resumed*/) override {}
    void OnCompleted(int id, std::string const& refusal) override { deliveries_.Complete(id, refusal); }
    void OnClosed(std::string const& reason) override { ADD_FAILURE() << reason; }

    void Serve() {
        client_.Serve(true, true);
        std::this_thread::sleep_for(10ms);
    }
    /// Sends all that lies in the spool and waits until it is completed.
    void SendAll() {
        deliveries_.Send(client_);
        for (int i = 0; i < 6000 && !deliveries_.IsEmpty(); ++i) {
            Serve();
            deliveries_.Settle();
            deliveries_.Send(client_);
        }
        EXPECT_TRUE(deliveries_.IsEmpty());
    }

private:
    Deliveries& deliveries_;
    Client client_;
};

class DeliveriesTest : public testing::Test {
protected:
    BrokerAddress MakeAddress() const {
        BrokerAddress address;
        address.host = "127.0.0.1";
        address.port = broker.GetPort();
        return address;
    }
    void Put(std::string const& text) { spool.Append(SpooledLine{{}, "gate", text}.Pack()); }

    Broker broker;
    TemporaryDirectory folder;
    prometheus::Registry registry;
    PublisherMetrics metrics{registry};
    Spool spool{folder / "spool", 1U << 20U};
    Deliveries deliveries{MakeAddress(), false, spool, metrics};
};

TEST_F(DeliveriesTest, SendMoreLinesThanMayBeOnTheirWayAndTakeThemOffTheSpool) {
    Subscriber const subscriber(broker.GetPort(), "qel/gate/detections");
    for (int i = 0; i < 50; ++i) Put(std::to_string(i));
    Connection(MakeAddress(), deliveries).SendAll();
    auto const messages = subscriber.WaitFor(50);
    ASSERT_EQ(messages.size(), 50U);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(messages[static_cast<std::size_t>(i)].payload, std::to_string(i));
    EXPECT_EQ(spool.GetCounts().messages, 0U);
}

TEST_F(DeliveriesTest, CountARecordThatIsNoLineAsRefusedAndGoOn) {
    Subscriber const subscriber(broker.GetPort(), "qel/gate/detections");
    spool.Append("");
    Put("first");
    spool.Append("from elsewhere");
    spool.Append("1\ngate");
    Put("second");
    spool.Append("99999999999999999999\ngate\ntext");
    Connection(MakeAddress(), deliveries).SendAll();
    auto const messages = subscriber.WaitFor(2);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].payload, "first");
    EXPECT_EQ(messages[1].payload, "second");
    EXPECT_EQ(messages[1].number, "5");
    EXPECT_EQ(GetRefused(registry), 4);
    EXPECT_EQ(spool.GetCounts().messages, 0U);
}

TEST_F(DeliveriesTest, CountAMessageWhoseTopicIsNoneAsRefused) {
    spool.Append(SpooledLine{{}, "a/#", "text"}.Pack());
    Connection(MakeAddress(), deliveries).SendAll();
    EXPECT_EQ(GetRefused(registry), 1);
}

TEST_F(DeliveriesTest, SendNothingWithoutAConnection) {
    Put("first");
    struct Nobody : Client::Listener {
        void OnConnected(bool /*resumed*/) override {}
        void OnCompleted(int /*id*/, std::string const& /*refusal*/) override {}
        void OnClosed(std::string const& /*reason*/) override {}
    } nobody;
    Client client(MakeAddress(), "deliveries", Client::Session::Fresh, {}, nobody);
    deliveries.Send(client);
    EXPECT_TRUE(deliveries.IsEmpty());
    EXPECT_EQ(spool.GetCounts().messages, 1U);
}

}  // namespace
}  // namespace qel::serve::mqtt
