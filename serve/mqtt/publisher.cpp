#include "mqtt/publisher.hpp"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <exception>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "backoff.hpp"
#include "mqtt/client.hpp"
#include "mqtt/deliveries.hpp"
#include "mqtt/publisher_metrics.hpp"
#include "mqtt/spool.hpp"
#include "mqtt/spooled_line.hpp"
#include "mqtt/wake_up.hpp"
#include "qel/logging/logger.hpp"

// One thread does everything but putting lines into the spool, which their own threads do.
//
// The broker remembers messages on their way by numbers that this library of MQTT hands out from 1 in each process, so
// what it remembers of an earlier process would be taken for ours: a session is forgotten before it is used for the
// first time (Phase::Clear). After that it is kept, and a connection that comes back completes what was on its way. A
// broker that has forgotten the session leaves open how far those messages came: they are sent again.
namespace qel::serve::mqtt {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

logging::Logger const Log(logging::Name("qel.serve.mqtt.Publisher"));

constexpr seconds ConnectTime{10};
constexpr seconds LastLinesTime{2};
constexpr seconds LastWordTime{1};
constexpr seconds ReportPause{60};

}  // namespace

struct Publisher::Impl : Client::Listener {
    enum class Phase { Clear, Publish };

    Impl(Options given, prometheus::Registry& registry)
        : options(std::move(given)),
          metrics(registry),
          spool(options.spool, options.spoolBytes),
          deliveries(options.broker, options.onvif, spool, metrics),
          backoff(options.firstPause, options.longestPause),
          statusTopic(options.broker.prefix + "/status") {
        MakeClient(Phase::Clear);
        metrics.SetSpool(spool.GetCounts());
        thread = std::thread([this] { Run(); });
    }

    ~Impl() override { Stop(); }

    void Stop() {
        if (!thread.joinable()) return;
        stopping = true;
        wake.Call();
        thread.join();
    }

    void MakeClient(Phase which) {
        phase = which;
        bool const clear = phase == Phase::Clear;
        client.emplace(options.broker, "qel-" + spool.GetId(), clear ? Client::Session::Fresh : Client::Session::Kept,
                       clear ? Client::Will{} : Client::Will{statusTopic, "offline"}, *this);
        nextAttempt = Clock::now();
    }

    void OnConnected(bool resumed) override {
        connecting = false;
        if (phase == Phase::Clear) {
            cleared = true;
            return;
        }
        sessionLost = !resumed && !deliveries.IsEmpty();
        // At once: the library sends what was on its way as soon as this returns, and it would arrive twice.
        if (sessionLost) return client->Disconnect();
        backoff.Reset();
        connected = true;
        greeting = true;
        metrics.SetConnected(true);
        if (connections++ > 0) metrics.CountReconnect();
        if (std::exchange(awayReported, false)) Log.Log(logging::Level::Notice, "the broker %0% is back", Where());
    }

    void OnCompleted(int id, std::string const& refusal) override {
        if (sessionLost) return;
        if (id == lastWordId) lastWordSaid = true;
        deliveries.Complete(id, refusal);
    }

    void OnClosed(std::string const& reason) override {
        connecting = false;
        connected = false;
        if (sessionLost) return;
        metrics.SetConnected(false);
        nextAttempt = Clock::now() + backoff.Next();
        // Once for each time it is away, and not for each of many short ones; attempts that fail come here as well.
        if (awayReported || Clock::now() < nextAwayReport) return;
        awayReported = true;
        nextAwayReport = Clock::now() + ReportPause;
        Log.Log(logging::Level::Warning,
                "no connection to the broker %0%: %1%; lines are kept in '%2%' until there is one", Where(), reason,
                options.spool.string());
    }

    std::string Where() const { return options.broker.GetName(); }

    void Run() {
        // A connection that breaks while something is written must not end the process.
        sigset_t pipe;
        sigemptyset(&pipe);
        sigaddset(&pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
        for (bool over = false; !over;) {
            try {
                Step();
                over = IsOver();
            } catch (std::exception const& error) {
                Complain(error.what());
                // Whatever keeps failing does not keep the server from ending.
                over = stopping;
                if (!over) std::this_thread::sleep_for(seconds(1));
            }
        }
        if (connected) client->Disconnect();
    }

    void Complain(char const* failure) {
        if (Clock::now() < nextComplaint) return;
        nextComplaint = Clock::now() + ReportPause;
        Log.Log(logging::Level::Error, "publishing to %0%: %1%", Where(), failure);
    }

    void Step() {
        auto const now = Clock::now();
        if (connecting && now > connectDeadline) {
            OnClosed(client->IsLookingUp() ? "its name is not found within 10 seconds" : "no answer within 10 seconds");
        }
        if (!connecting && !connected && now >= nextAttempt) {
            connecting = true;
            connectDeadline = now + ConnectTime;
            client->Open();
        }
        if (!stopping || Clock::now() <= stopDeadline) deliveries.Send(*client);
        auto const ready =
            wake.Wait(GetDescriptor(), connecting || connected ? client->WantsToWrite() : false, GetPause());
        if (GetDescriptor() >= 0) client->Serve(ready.readable, ready.writable);
        if (std::exchange(cleared, false)) {
            client->Disconnect();
            MakeClient(Phase::Publish);
        }
        if (std::exchange(sessionLost, false)) {
            deliveries.SendAgain();
            MakeClient(Phase::Clear);
        }
        if (std::exchange(greeting, false)) Say("online");
        deliveries.Settle();
        if (now >= nextTick) {
            nextTick = now + seconds(1);
            spool.Sync();
            Report();
        }
    }

    int GetDescriptor() const { return connecting || connected ? client->GetDescriptor() : -1; }

    milliseconds GetPause() const {
        auto until = nextTick;
        if (!connecting && !connected) until = std::min(until, nextAttempt);
        if (lastWordId != 0) until = std::min(until, stopDeadline);
        return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(until - Clock::now()));
    }

    int Say(char const* word) {
        int id = 0;
        std::string const refusal = client->Publish({statusTopic, word, 1, true, {}}, id);
        if (!refusal.empty()) deliveries.Refuse(refusal);
        return refusal.empty() ? id : 0;
    }

    void Report() {
        auto const counts = spool.GetCounts();
        metrics.SetSpool(counts);
        if (counts.lost == reportedLost || Clock::now() < nextLossReport) return;
        Log.Log(logging::Level::Warning,
                "%0% lines are lost that should have gone to %1%: the spool is full or cannot "
                "be written",
                counts.lost - reportedLost, Where());
        reportedLost = counts.lost;
        nextLossReport = Clock::now() + ReportPause;
    }

    /// Whether the thread is to end: at once without a connection, else when the last lines and words are out or had
    /// their time.
    bool IsOver() {
        if (!stopping) return false;
        auto const now = Clock::now();
        if (!stopBegun) {
            stopBegun = true;
            stopDeadline = now + LastLinesTime;
        }
        if (!connected) return true;
        if (lastWordId == 0) {
            bool const empty = deliveries.IsEmpty() && spool.GetCounts().messages == 0;
            if (!empty && now < stopDeadline) return false;
            lastWordId = Say("offline");
            stopDeadline = now + LastWordTime;
            return lastWordId == 0;
        }
        return (lastWordSaid && deliveries.IsEmpty()) || now >= stopDeadline;
    }

    Options options;
    PublisherMetrics metrics;
    Spool spool;
    Deliveries deliveries;
    WakeUp wake{};
    host::Backoff backoff;
    std::string statusTopic;
    std::atomic<bool> stopping = false;
    std::atomic<bool> connected = false;

    // Of the thread alone.
    Phase phase = Phase::Clear;
    std::optional<Client> client{};
    bool connecting = false;
    bool cleared = false;
    bool sessionLost = false;
    bool greeting = false;
    bool awayReported = false;
    std::uint64_t connections = 0;
    Clock::time_point nextAttempt{};
    Clock::time_point connectDeadline{};
    Clock::time_point nextTick{};
    Clock::time_point nextAwayReport{};
    Clock::time_point nextLossReport{};
    Clock::time_point nextComplaint{};
    std::uint64_t reportedLost = 0;
    bool stopBegun = false;
    Clock::time_point stopDeadline{};
    int lastWordId = 0;
    bool lastWordSaid = false;

    std::thread thread{};
};

Publisher::Publisher(Options options, prometheus::Registry& metrics)
    : impl_(std::make_unique<Impl>(std::move(options), metrics)) {}

Publisher::~Publisher() = default;

void Publisher::Stop() {
    impl_->Stop();
    try {
        impl_->spool.Sync();
    } catch (std::exception const& error) {
        Log.Log(logging::Level::Error, "%0%", error.what());
    }
}

void Publisher::Publish(std::string_view stream, std::string_view line) noexcept {
    try {
        while (line.ends_with('\n')) line.remove_suffix(1);
        impl_->spool.Append(SpooledLine{std::chrono::system_clock::now(), stream, line}.Pack());
    } catch (std::exception const&) {
        // The spool counts it, and the thread reports it.
    }
    impl_->wake.Call();
}

bool Publisher::IsConnected() const noexcept { return impl_->connected; }

}  // namespace qel::serve::mqtt
