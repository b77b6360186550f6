// Where the broker's name leads: to several addresses, or nowhere for a long time.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include <gtest/gtest.h>
#include <prometheus/registry.h>

#include "broker.hpp"
#include "fake_name.hpp"
#include "mqtt/publisher.hpp"
#include "mqtt/spool.hpp"
#include "qel/logging/sink.hpp"
#include "serve/listener.hpp"
#include "subscriber.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using namespace std::chrono_literals;
using qel::serve::test::Happens;
using qel::test::TemporaryDirectory;
using test::Broker;
using test::FakeName;
using test::Subscriber;

class PublisherAddress : public testing::Test {
protected:
    Publisher::Options MakeOptions(unsigned short port) const {
        Publisher::Options options;
        options.broker.host = FakeName::Text;
        options.broker.port = port;
        options.spool = folder_ / "spool";
        options.firstPause = options.longestPause = 50ms;
        return options;
    }

    /// What the publisher says first.
    std::string GetSaid() const {
        std::lock_guard const guard(mutex_);
        return said_;
    }

    TemporaryDirectory const folder_;
    prometheus::Registry metrics_;
    mutable std::mutex mutex_;
    std::string said_;
    type::Binding const sink_ = logging::BindSink([this](logging::Level, std::string_view, std::string_view text) {
        std::lock_guard const guard(mutex_);
        if (said_.empty()) said_ = text;
    });
};

/// A look-up that does not end before it is let go.
class Hang {
public:
    Hang() = default;
    ~Hang() { LetGo(); }

    std::function<void()> Get() {
        return [state = state_] {
            std::unique_lock lock(state->mutex);
            ++state->waiting;
            state->changed.wait(lock, [&] { return state->over; });
            --state->waiting;
        };
    }
    void LetGo() {
        std::lock_guard const guard(state_->mutex);
        state_->over = true;
        state_->changed.notify_all();
    }
    int GetWaiting() const {
        std::lock_guard const guard(state_->mutex);
        return state_->waiting;
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        bool over = false;
        int waiting = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

TEST_F(PublisherAddress, ReachesABrokerThatListensAtTheSecondAddressOfItsNameOnly) {
    // The broker listens at 127.0.0.1, which is an address of version 6, too.
    struct Case {
        char const *nobody, *broker;
    };
    constexpr Case Cases[] = {{"::1", "127.0.0.1"}, {"127.0.0.2", "::ffff:127.0.0.1"}};
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.broker);
        Broker broker;
        FakeName const name({c.nobody, c.broker});
        Subscriber const subscriber(broker.GetPort(), "qel/gate/detections");
        Publisher publisher(MakeOptions(broker.GetPort()), metrics_);
        for (int round = 0; round < 2; ++round) {
            EXPECT_TRUE(Happens([&] { return publisher.IsConnected(); })) << GetSaid();
            publisher.Publish("gate", "{}");
            EXPECT_EQ(subscriber.WaitFor(static_cast<std::size_t>(round) + 1).size(),
                      static_cast<std::size_t>(round) + 1);
            if (round > 0) break;
            broker.Stop();
            EXPECT_TRUE(Happens([&] { return !publisher.IsConnected(); }));
            broker.Start();
        }
    }
}

TEST_F(PublisherAddress, EndsWhileTheNameIsBeingLookedUpAndKeepsItsLines) {
    Hang hang;
    FakeName const name({"127.0.0.1"}, hang.Get());
    std::optional<Publisher> publisher(std::in_place, MakeOptions(1), metrics_);
    ASSERT_TRUE(Happens([&] { return hang.GetWaiting() == 1; }));
    publisher->Publish("gate", "{}");
    publisher.reset();
    EXPECT_EQ(hang.GetWaiting(), 1) << "nobody has waited for the look-up";
    {
        // Nothing of the publisher is held any more.
        Spool const spool(folder_ / "spool", 1 << 20);
        EXPECT_EQ(spool.GetCounts().messages, 1U);
    }
    hang.LetGo();
    EXPECT_TRUE(Happens([&] { return hang.GetWaiting() == 0; }));
}

TEST_F(PublisherAddress, ConnectsAsSoonAsTheNameIsFound) {
    Broker broker;
    Hang hang;
    FakeName const name({"127.0.0.1"}, hang.Get());
    Subscriber const subscriber(broker.GetPort(), "qel/gate/detections");
    Publisher publisher(MakeOptions(broker.GetPort()), metrics_);
    publisher.Publish("gate", "{}");
    ASSERT_TRUE(Happens([&] { return !GetSaid().empty(); }));
    EXPECT_EQ(GetSaid(), "no connection to the broker mqtt://broker.fake:" + std::to_string(broker.GetPort()) +
                             ": its name is not found within 10 seconds; lines are kept in '" + (folder_ / "spool") +
                             "' until there is one");
    EXPECT_EQ(hang.GetWaiting(), 1) << "one look-up at a time, however long it takes";
    hang.LetGo();
    EXPECT_EQ(subscriber.WaitFor(1).size(), 1U);
}

TEST_F(PublisherAddress, SaysOfAnAddressOnlyWhatWentWrongThere) {
    // The certificates are away while the first address is tried.
    std::string const authorities = "/etc/ssl/certs/ca-certificates.crt";
    std::filesystem::copy_file(authorities, folder_ / "ca.pem");
    std::atomic<int> lookUps = 0;
    FakeName const name({"127.0.0.2", "::ffff:127.0.0.2"}, [&] {
        // The client looks the name up, and then the library once an attempt.
        switch (++lookUps) {
            case 2:
                std::filesystem::rename(folder_ / "ca.pem", folder_ / "away.pem");
                break;
            case 3:
                std::filesystem::rename(folder_ / "away.pem", folder_ / "ca.pem");
                break;
            default:
                break;
        }
    });
    Broker broker;
    auto options = MakeOptions(broker.GetPort());
    // One round of attempts, whose look-ups are counted below.
    options.firstPause = options.longestPause = 1h;
    options.broker.tls = true;
    options.broker.authorities = folder_ / "ca.pem";
    Publisher const publisher(options, metrics_);
    ASSERT_TRUE(Happens([&] { return !GetSaid().empty(); }));
    EXPECT_EQ(GetSaid(), "no connection to the broker mqtts://broker.fake:" + std::to_string(broker.GetPort()) +
                             ": no connection can be made; lines are kept in '" + (folder_ / "spool") +
                             "' until there is one");
    EXPECT_EQ(lookUps, 3);
}

}  // namespace
}  // namespace qel::serve::mqtt
