#include "supervisor.hpp"

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

#include "catalogue.hpp"
#include "fixtures/plugins/hanging.hpp"
#include "serve/listener.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::serve {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using State = StreamStatus::State;

/// Streams that a test sets.
class Specs {
public:
    void Set(std::vector<StreamSpec> specs) {
        std::function<void()> handler;
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            specs_ = std::move(specs);
            handler = handler_;
        }
        if (handler) handler();
    }
    bool IsFollowed() const {
        std::lock_guard<std::mutex> const lock(mutex_);
        return handler_ != nullptr;
    }

    StreamList GetList() {
        return {.get =
                    [this] {
                        std::lock_guard<std::mutex> const lock(mutex_);
                        return specs_;
                    },
                .bind =
                    [this](std::function<void()> handler) {
                        SetHandler(std::move(handler));
                        return type::Binding([this] { SetHandler({}); });
                    }};
    }

private:
    void SetHandler(std::function<void()> handler) {
        std::lock_guard<std::mutex> const lock(mutex_);
        handler_ = std::move(handler);
    }

    mutable std::mutex mutex_;
    std::vector<StreamSpec> specs_;
    std::function<void()> handler_;
};

class OfSupervisor : public testing::Test {
protected:
    OfSupervisor() {
        qel::test::WriteMovingSquare(video, {.frames = 6, .framesPerSecond = 100});
        runtime.MakeConfigurations();
    }

    StreamSpec Spec(std::string id, std::string const& algorithm = "threshold") {
        StreamSpec spec{.id = std::move(id), .source = video, .loop = true, .algorithms = {algorithm}};
        spec.settings[algorithm] = runtime.MakeOwnConfiguration(host::FindAlgorithm(algorithm));
        return spec;
    }

    void Start(std::vector<StreamSpec> list) {
        specs.Set(std::move(list));
        supervisor.emplace(runtime, specs.GetList(), bus, registry);
    }

    std::vector<std::string> Ids() const {
        std::vector<std::string> ids;
        for (StreamStatus const& status : supervisor->GetStatus()) ids.push_back(status.id);
        return ids;
    }
    bool ReachesFrame(std::string const& id, std::uint64_t frames) {
        return test::Happens([&] { return supervisor->GetStatus(id).value().frames >= frames; });
    }
    std::string Metrics() const { return prometheus::TextSerializer().Serialize(registry.Collect()); }

    qel::test::TemporaryDirectory directory;
    std::string video = directory / "video.mkv";
    host::Runtime runtime;
    EventBus bus;
    test::Listener listener{bus};
    prometheus::Registry registry;
    Specs specs;
    std::optional<Supervisor> supervisor;
};

TEST_F(OfSupervisor, AStreamThatFailsAllTheTimeDisturbsNoOther) {
    StreamSpec missing = Spec("missing");
    missing.source = directory / "none.mkv";
    StreamSpec twice = Spec("twice");
    twice.algorithms.push_back("threshold");
    StreamSpec unknown = Spec("unknown");
    unknown.algorithms = {"nothing"};
    Start({Spec("bad", "fail"), Spec("good"), missing, twice, unknown});
    ASSERT_TRUE(ReachesFrame("good", 100));
    EXPECT_THAT(Ids(), ElementsAre("bad", "good", "missing", "twice", "unknown"));
    EXPECT_THAT(listener.GetStates("good"), ElementsAre("starting", "running"));
    auto const problemOf = [&](std::string const& id) {
        // Kept: it is none any more while the stream is tried again.
        std::string problem;
        EXPECT_TRUE(test::Happens([&] {
            problem = supervisor->GetStatus(id)->problem;
            return problem != "";
        }));
        return problem;
    };
    EXPECT_EQ(problemOf("bad"), "the algorithm 'Fail' failed: three is too many");
    EXPECT_THAT(problemOf("missing"), HasSubstr("no such file"));
    EXPECT_EQ(problemOf("twice"), "the algorithm 'Threshold' is named twice");
    EXPECT_EQ(problemOf("unknown"), "the algorithm 'nothing' has no settings");
    EXPECT_TRUE(test::Happens([&] { return supervisor->GetStatus("bad")->restarts >= 2; }));
    EXPECT_FALSE(supervisor->GetStatus("nobody"));
}

TEST_F(OfSupervisor, StreamsComeAndGoWhileOthersRun) {
    Start({Spec("gate")});
    ASSERT_TRUE(ReachesFrame("gate", 2));
    specs.Set({Spec("door"), Spec("gate")});
    EXPECT_THAT(Ids(), ElementsAre("door", "gate")) << "at once";
    ASSERT_TRUE(ReachesFrame("door", 2));
    auto const viewer = supervisor->Look("gate", {});
    ASSERT_TRUE(viewer);
    specs.Set({Spec("door")});
    EXPECT_THAT(Ids(), ElementsAre("door"));
    EXPECT_FALSE(viewer->IsAlive());
    EXPECT_FALSE(viewer->Draw());
    EXPECT_FALSE(supervisor->Look("gate", {}));
    EXPECT_TRUE(test::Happens([&] { return Metrics().find("gate") == std::string::npos; }));
    EXPECT_THAT(Metrics(), HasSubstr("door"));
    auto const lines = listener.Get("detection", "gate").size();
    ASSERT_TRUE(ReachesFrame("door", supervisor->GetStatus("door")->frames + 5));
    EXPECT_EQ(listener.Get("detection", "gate").size(), lines);
}

TEST_F(OfSupervisor, AStreamThatIsRemovedAndAddedAgainBeginsAfresh) {
    Start({Spec("gate")});
    ASSERT_TRUE(ReachesFrame("gate", 4));
    specs.Set({});
    specs.Set({Spec("gate")});
    EXPECT_TRUE(supervisor->Look("gate", {})->IsAlive());
    EXPECT_TRUE(test::Happens([&] {
        auto const lines = listener.Get("detection", "gate");
        return std::count_if(lines.begin(), lines.end(),
                             [](std::string const& line) { return boost::json::parse(line).at("frame") == 0; }) == 2;
    })) << "its frames are counted from 0 again";
    ASSERT_TRUE(ReachesFrame("gate", 2));
    EXPECT_THAT(listener.GetStates("gate"), ElementsAre("starting", "running", "starting", "running"));
}

TEST_F(OfSupervisor, EachStreamHasSettingsOfItsOwn) {
    StreamSpec const gate = Spec("gate");
    Start({gate, Spec("door")});
    gate.settings.at("threshold")->Set("label", "moving");
    EXPECT_TRUE(test::Happens([&] {
        auto const lines = listener.Get("detection", "gate");
        return !lines.empty() && lines.back().find("\"moving\"") != std::string::npos;
    }));
    ASSERT_TRUE(ReachesFrame("door", 2));
    for (std::string const& line : listener.Get("detection", "door")) EXPECT_THAT(line, Not(HasSubstr("moving")));
}

TEST_F(OfSupervisor, MetricsAreBroughtUpToDateWithoutFrames) {
    Start({Spec("gate")});
    EXPECT_TRUE(
        test::Happens([&] { return Metrics().find("qel_stream_running{stream=\"gate\"} 1") != std::string::npos; }));
    auto const viewer = supervisor->Look("gate", {});
    EXPECT_TRUE(
        test::Happens([&] { return Metrics().find("qel_stream_viewers{stream=\"gate\"} 1") != std::string::npos; }));
    supervisor.reset();
    EXPECT_FALSE(specs.IsFollowed());
    EXPECT_THAT(Metrics(), Not(HasSubstr("gate")));
    EXPECT_FALSE(viewer->IsAlive());
}

TEST_F(OfSupervisor, NamesTheAlgorithmsThatDoNotReturnWhenItIsToStop) {
    StreamSpec gate = Spec("gate"), gone = Spec("gone", "hanging");
    gate.algorithms.push_back("hanging");
    gate.settings["hanging"] = Spec("gate", "hanging").settings.at("hanging");
    Start({gate, Spec("door"), gone});
    ASSERT_TRUE(test::Happens([] { return fixture::CountHanging() == 2; }));
    // It is not there any more for anybody else, and the one that was added instead cannot begin.
    specs.Set({gate, Spec("door")});
    specs.Set({gate, Spec("door"), Spec("gone")});
    // Time enough for the stream that does end.
    EXPECT_THAT(supervisor->Stop(std::chrono::steady_clock::now() + 3s),
                ElementsAre("the stream 'gone' has not ended: the algorithm 'hanging' has not returned",
                            "the stream 'gate' has not ended: the algorithm 'hanging' has not returned"));
    specs.Set({gate, Spec("door"), Spec("late")});
    EXPECT_THAT(Ids(), ElementsAre("gate", "door", "gone")) << "nothing begins any more";
    for (StreamSpec const& spec : {gate, gone}) spec.settings.at("hanging")->Set("hanging", false);
    EXPECT_THAT(supervisor->Stop(std::chrono::steady_clock::now() + 60s), ElementsAre());
}

TEST_F(OfSupervisor, StreamsAreAddedRemovedAndLookedAtByManyThreadsAtOnce) {
    std::vector<StreamSpec> const all{Spec("a"), Spec("b", "fail"), Spec("c")};
    Start(all);
    std::atomic<bool> stop = false;
    std::atomic<int> pictures = 0;
    std::vector<std::thread> threads;
    for (char const* const id : {"a", "b", "c"}) {
        threads.emplace_back([&, id] {
            while (!stop) {
                auto const viewer = supervisor->Look(id, {.maxWidth = 32}, [&] { ++pictures; });
                if (!viewer) continue;
                for (int i = 0; i < 5 && viewer->IsAlive(); ++i) {
                    if (viewer->Draw()) ++pictures;
                    std::this_thread::sleep_for(1ms);
                }
            }
        });
        threads.emplace_back([&, id] {
            while (!stop) {
                (void)supervisor->GetStatus(id);
                (void)supervisor->GetStatus();
                (void)Metrics();
                std::this_thread::sleep_for(1ms);
            }
        });
    }
    for (int round = 0; round < 20; ++round) {
        std::vector<StreamSpec> some;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if ((round + int(i)) % 3 != 0) some.push_back(all[i]);
        }
        if (round % 4 == 1) some.front().enabled = false;
        all.front().settings.at("threshold")->Set("label", round % 2 == 0 ? "moving" : "bright");
        specs.Set(some);
        std::this_thread::sleep_for(20ms);
    }
    specs.Set(all);
    EXPECT_TRUE(ReachesFrame("a", 3));
    EXPECT_TRUE(ReachesFrame("c", 3));
    EXPECT_TRUE(test::Happens([&] { return pictures > 0; }));
    stop = true;
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace qel::serve
