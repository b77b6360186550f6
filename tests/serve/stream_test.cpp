#include "stream.hpp"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

#include "calibration/calibration_file.hpp"
#include "catalogue.hpp"
#include "error.hpp"
#include "fixtures/plugins/hanging.hpp"
#include "open_stream.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "result_line.hpp"
#include "serve/fake_source.hpp"
#include "serve/listener.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"

namespace qel::serve {
namespace {

using namespace std::chrono_literals;
using configuration::node::Map;
using testing::ElementsAre;
using testing::HasSubstr;
using State = StreamStatus::State;

class StreamOf : public testing::Test {
protected:
    StreamOf() {
        qel::test::WriteMovingSquare(video, {.frames = 6, .framesPerSecond = 100});
        runtime.MakeConfigurations();
    }

    StreamSpec Spec(std::vector<std::string> algorithms = {"threshold"}) {
        StreamSpec spec{.id = "gate", .source = video, .algorithms = std::move(algorithms)};
        for (std::string const& name : spec.algorithms) {
            spec.settings[name] = runtime.MakeOwnConfiguration(host::FindAlgorithm(name));
        }
        return spec;
    }

    void Start(StreamSpec const& spec, StreamParts::Open open = OpenStream) {
        stream.emplace(spec,
                       StreamParts{.open = std::move(open),
                                   .makeAlgorithms =
                                       [this](StreamSpec const& now) {
                                           std::vector<host::ChainLink> links;
                                           for (auto const& name : now.algorithms) {
                                               links.push_back({host::FindAlgorithm(name), now.settings.at(name)});
                                           }
                                           return std::make_unique<host::AlgorithmChain>(runtime, links);
                                       },
                                   .bus = bus,
                                   .metrics = metrics,
                                   .retry = retry,
                                   .patience = patience});
    }

    /// Whether the stream comes into a state and tells it, sooner or later.
    bool Reaches(State state) {
        return test::Happens([&] {
            auto const told = listener.GetStates();
            return stream->GetStatus().state == state && !told.empty() && told.back().starts_with(ToText(state));
        });
    }
    bool ReachesFrame(std::uint64_t frames) {
        return test::Happens([&] { return stream->GetStatus().frames >= frames; });
    }

    std::string Metrics() {
        stream->RefreshMetrics();
        return prometheus::TextSerializer().Serialize(registry.Collect());
    }

    qel::test::TemporaryDirectory directory;
    std::string video = directory / "video.mkv";
    host::Runtime runtime;
    EventBus bus;
    test::Listener listener{bus};
    prometheus::Registry registry;
    std::shared_ptr<StreamMetrics> metrics = StreamMetricsBook(registry).Get("gate");
    host::ReconnectPolicy retry{.firstWait = 1ms, .longestWait = 4ms, .goodFrames = 250};
    std::chrono::milliseconds patience{15'000};
    std::optional<Stream> stream;
};

TEST_F(StreamOf, AnAlgorithmThatDoesNotReturnIsToldOfUntilItDoes) {
    StreamSpec spec = Spec({"threshold", "hanging"});
    spec.loop = true;
    patience = 300ms;
    Start(spec);
    // Not looked at before: a busy machine may take as long for another part of the stream.
    ASSERT_TRUE(test::Happens([] { return fixture::CountHanging() == 1; }));
    EXPECT_TRUE(test::Happens([&] {
        stream->LookAfter();
        return stream->GetStatus().state == State::Waiting;
    }));
    stream->LookAfter();
    EXPECT_EQ(stream->GetStatus().problem, "the algorithm 'hanging' has not returned for more than 0.3 seconds");
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_running{stream=\"gate\"} 0"));
    spec.settings.at("hanging")->Set("hanging", false);
    ASSERT_TRUE(ReachesFrame(4));
    EXPECT_EQ(stream->GetStatus().problem, "");
    EXPECT_THAT(listener.GetStates(),
                ElementsAre("starting", "running",
                            "waiting: the algorithm 'hanging' has not returned for more than 0.3 seconds", "running"));
}

TEST_F(StreamOf, ASourceThatDoesNotReturnIsToldOfAndTheTimeBetweenTwoFramesIsNot) {
    patience = 1s;
    std::atomic<bool> isHanging = true, isAsked = false;
    Start(Spec(), [&](auto const&...) {
        return std::make_unique<test::FakeSource>(
            [&isHanging, &isAsked, next = 0]() mutable -> std::optional<host::FrameSource::Frame> {
                isAsked = next == 1;
                while (next == 1 && isHanging) std::this_thread::sleep_for(1ms);
                if (next == 2) return std::nullopt;
                return test::MakeGreyFrame(5s * next++);
            });
    });
    ASSERT_TRUE(test::Happens([&] { return isAsked.load(); }));
    EXPECT_TRUE(test::Happens([&] {
        stream->LookAfter();
        return stream->GetStatus().problem == "its source has not returned for more than 1 seconds";
    }));
    isHanging = false;
    EXPECT_TRUE(test::Happens([&] {
        stream->LookAfter();
        return stream->GetStatus().state == State::Ended;
    }));
    EXPECT_THAT(listener.GetStates(),
                ElementsAre("starting", "running", "waiting: its source has not returned for more than 1 seconds",
                            "running", "ended"));
}

TEST_F(StreamOf, AFileTellsTheLinesOfARunAndItsStates) {
    Start(Spec());
    ASSERT_TRUE(Reaches(State::Ended));
    host::VideoSource source(host::Locate(video), {media::ColourFormat::Grey8});
    std::vector<std::string> lines;
    while (auto const frame = source.Read()) {
        algorithm::video::Result result;
        unsigned int const x = 2 * static_cast<unsigned int>(lines.size());
        result.objects = {{{x, 8, x + 8, 16}, 64, "bright", 0.5F}};
        lines.push_back(host::MakeResultLine("gate", {lines.size(), *frame, result}));
        lines.back().pop_back();
    }
    EXPECT_EQ(listener.Get("detection"), lines);
    EXPECT_THAT(listener.GetStates(), ElementsAre("starting", "running", "ended"));
    StreamStatus const status = stream->GetStatus();
    EXPECT_EQ(status.id, "gate");
    EXPECT_EQ(status.frames, 6U);
    EXPECT_EQ(status.objects, 6U);
    EXPECT_EQ(status.size, (geometry::Dimension<unsigned int, 2>{64, 48}));
    EXPECT_EQ(status.problem, "");
    EXPECT_FALSE(status.calibrated);
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_frames_total{stream=\"gate\"} 6\n"));
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_stage_seconds_count{stage=\"algorithm\",stream=\"gate\"} 6\n"));
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_running{stream=\"gate\"} 0\n"));
}

TEST_F(StreamOf, AFileThatIsLoopedGoesOn) {
    StreamSpec spec = Spec();
    spec.loop = true;
    Start(spec);
    ASSERT_TRUE(ReachesFrame(14));
    auto const lines = listener.Get("detection");
    for (std::size_t i = 0; i < 14; ++i) {
        auto const line = boost::json::parse(lines[i]).as_object();
        EXPECT_EQ(line.at("frame").as_int64(), std::int64_t(i));
        EXPECT_EQ(line.at("timestamp").as_int64(), std::int64_t(i) * 10'000'000);
        EXPECT_FALSE(line.contains("gap"));
        EXPECT_EQ(line.at("objects").at(0).at("x").as_int64(), std::int64_t(i % 6 * 2));
    }
    EXPECT_THAT(listener.GetStates(), ElementsAre("starting", "running"));
    EXPECT_EQ(stream->GetStatus().state, State::Running);
    EXPECT_GT(stream->GetStatus().framesPerSecond, 0);
}

TEST_F(StreamOf, AnAlgorithmThatFailsIsStartedAgainWithItsFramesCountedOn) {
    StreamSpec spec = Spec({"fail"});
    spec.loop = true;
    Start(spec);
    ASSERT_TRUE(test::Happens([&] { return stream->GetStatus().restarts >= 3; }));
    stream.reset();
    auto const lines = listener.Get("detection");
    ASSERT_GE(lines.size(), 6U);
    std::int64_t last = -1;
    for (std::size_t i = 0; i < 6; ++i) {
        auto const line = boost::json::parse(lines[i]).as_object();
        EXPECT_EQ(line.at("frame").as_int64(), std::int64_t(i));
        EXPECT_GT(line.at("timestamp").as_int64(), last);
        last = line.at("timestamp").as_int64();
        EXPECT_EQ(line.contains("gap"), i == 2 || i == 4) << "the first frame of a new attempt";
    }
    auto const states = listener.GetStates();
    ASSERT_GE(states.size(), 6U);
    EXPECT_THAT(std::vector(states.begin(), states.begin() + 6),
                ElementsAre("starting", "running", "waiting: the algorithm 'Fail' failed: three is too many",
                            "starting: the algorithm 'Fail' failed: three is too many", "running",
                            "waiting: the algorithm 'Fail' failed: three is too many"));
}

TEST_F(StreamOf, AFileThatIsMissingIsWaitedFor) {
    StreamSpec spec = Spec();
    spec.source = directory / "later.mkv";
    Start(spec);
    ASSERT_TRUE(Reaches(State::Waiting));
    EXPECT_EQ(stream->GetStatus().problem, "no such file: '" + spec.source + "'");
    ASSERT_TRUE(test::Happens([&] { return stream->GetStatus().restarts >= 2; }));
    std::filesystem::rename(video, spec.source);
    EXPECT_TRUE(Reaches(State::Ended));
    EXPECT_EQ(stream->GetStatus().problem, "");
    EXPECT_EQ(stream->GetStatus().frames, 6U);
}

TEST_F(StreamOf, AnythingMayBeThrown) {
    std::atomic<int> attempts = 0;
    Start(Spec({}), [&](auto const&...) -> std::unique_ptr<host::FrameSource> {
        if (++attempts == 1) throw 7;
        if (attempts == 2) throw std::bad_alloc();
        return test::MakeFrames(2);
    });
    ASSERT_TRUE(Reaches(State::Ended));
    EXPECT_THAT(listener.GetStates(),
                ElementsAre("starting", "waiting: it failed for a reason that it does not tell",
                            "starting: it failed for a reason that it does not tell", "waiting: std::bad_alloc",
                            "starting: std::bad_alloc", "running", "ended"));
    EXPECT_EQ(stream->GetStatus().restarts, 2U);
}

TEST_F(StreamOf, ItGoesOnWhenThereIsNoMemoryToTellOfAFailure) {
    std::atomic<int> told = 0;
    auto const poor = bus.Subscribe({.kinds = {"stream"}}, [&told] {
        if (++told == 1) throw std::bad_alloc();
    });
    Start(Spec({}), [](auto const&...) { return test::MakeFrames(2); });
    EXPECT_TRUE(Reaches(State::Ended));
    EXPECT_EQ(stream->GetStatus().frames, 2U);
    stream.reset();
}

TEST_F(StreamOf, ASourceThatComesBackOfItselfIsWaitedForAndItsLossesAreTold) {
    int connections = 0;
    Start(Spec({}), [&](auto const&, auto const&, auto const& stop, auto const& say) {
        auto const open = [&connections]() -> std::unique_ptr<host::FrameSource> {
            if (++connections == 2) throw host::LostError("nobody answers");
            auto source = std::make_unique<test::FakeSource>(
                [&connections, next = 0]() mutable -> std::optional<host::FrameSource::Frame> {
                    if (next == 2 && connections == 1) throw host::LostError("silence", true);
                    return test::MakeGreyFrame(1ms * next++);
                },
                true);
            source->losses.droppedFrames = 3;
            return source;
        };
        return std::make_unique<host::ReconnectingSource>("camera", open, retry, stop, say);
    });
    ASSERT_TRUE(ReachesFrame(4));
    auto const states = listener.GetStates();
    ASSERT_EQ(states.size(), 5U);
    EXPECT_THAT(states[2], testing::StartsWith("waiting: silence; trying again in "));
    EXPECT_THAT(states[3], testing::StartsWith("waiting: nobody answers; trying again in "));
    EXPECT_EQ(states[4], "running");
    ASSERT_TRUE(test::Happens([&] { return stream->GetStatus().losses.returns == 1; }));
    host::Losses const losses = stream->GetStatus().losses;
    EXPECT_EQ(losses.interruptions, 1U);
    EXPECT_EQ(losses.stalls, 1U);
    EXPECT_EQ(losses.attempts, 2U);
    EXPECT_EQ(losses.droppedFrames, 6U);
    EXPECT_EQ(stream->GetStatus().restarts, 0U) << "the stream itself went on";
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_reconnects_total{stream=\"gate\"} 1\n"));
    stream.reset();
}

TEST_F(StreamOf, LossesAreAddedUpOverItsSources) {
    int opened = 0;
    Start(Spec({}), [&](auto const&...) -> std::unique_ptr<host::FrameSource> {
        auto source = std::make_unique<test::FakeSource>(
            [last = ++opened == 3, next = 0]() mutable -> std::optional<host::FrameSource::Frame> {
                if (next == 1 && !last) throw host::Error("gone");
                if (next == 1) return std::nullopt;
                return test::MakeGreyFrame(1ms * next++);
            },
            true);
        source->losses = {.interruptions = 1, .droppedFrames = 4};
        return source;
    });
    ASSERT_TRUE(Reaches(State::Ended));
    EXPECT_EQ(stream->GetStatus().losses.droppedFrames, 12U);
    EXPECT_EQ(stream->GetStatus().losses.interruptions, 3U);
}

TEST_F(StreamOf, ItsPauseEndsWhenItIsToldToStopOrToDoAnotherThing) {
    retry.firstWait = retry.longestWait = 1h;
    StreamSpec spec = Spec({});
    Start(spec, [&](StreamSpec const& now, auto const&...) -> std::unique_ptr<host::FrameSource> {
        if (now.source == "good") return test::MakeFrames(2);
        throw host::Error("no " + now.source);
    });
    ASSERT_TRUE(Reaches(State::Waiting));
    spec.source = "other";
    stream->Follow(spec);
    ASSERT_TRUE(test::Happens([&] { return stream->GetStatus().problem == "no other"; }));
    spec.source = "good";
    stream->Follow(spec);
    ASSERT_TRUE(Reaches(State::Ended));
    EXPECT_EQ(stream->GetStatus().restarts, 0U) << "nothing was started again of itself";
    spec.source = "bad";
    stream->Follow(spec);
    ASSERT_TRUE(Reaches(State::Waiting));
    stream.reset();
}

TEST_F(StreamOf, TheWaitForAFrameThatIsNotDueEndsWhenItIsToldToStop) {
    Start(Spec({}), [&](auto const&...) {
        return std::make_unique<test::FakeSource>([next = 0]() mutable { return test::MakeGreyFrame(9s * next++); });
    });
    ASSERT_TRUE(ReachesFrame(1));
    auto const start = std::chrono::steady_clock::now();
    stream.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s) << "it sat the wait out";
}

TEST_F(StreamOf, AFileIsPlayedAtItsOwnPaceAndALiveSourceAtIts) {
    for (bool const live : {true, false}) {
        std::atomic<int> read = 0;
        Start(Spec({}), [&](auto const&...) {
            return std::make_unique<test::FakeSource>(
                [&]() -> std::optional<host::FrameSource::Frame> {
                    if (read == 4) return std::nullopt;
                    return test::MakeGreyFrame(50ms * read++);
                },
                live);
        });
        ASSERT_TRUE(Reaches(State::Ended));
        auto const times = listener.TakeTimes("detection");
        ASSERT_EQ(times.size(), 4U);
        if (!live) {
            EXPECT_GE(times.back() - times.front(), 100ms) << "150 ms, the first of which may have been late";
        }
        stream.reset();
    }
}

TEST_F(StreamOf, ASettingTakesEffectWhileItRuns) {
    StreamSpec spec = Spec();
    spec.loop = true;
    Start(spec);
    ASSERT_TRUE(ReachesFrame(3));
    EXPECT_THAT(listener.Get("detection").back(), HasSubstr("\"label\":\"bright\""));
    spec.settings.at("threshold")->Set("label", "moving");
    stream->Follow(spec);
    ASSERT_TRUE(test::Happens([&] { return listener.Get("detection").back().find("moving") != std::string::npos; }));
    spec.settings.at("threshold")->Set("threshold", std::uint8_t{250});
    ASSERT_TRUE(test::Happens([&] { return listener.Get("detection").back().ends_with("\"objects\":[]}"); }));
    EXPECT_THAT(listener.GetStates(), ElementsAre("starting", "running")) << "nothing was started anew";
}

TEST_F(StreamOf, OtherNodesOfTheSameSettingsStartItAnew) {
    StreamSpec spec = Spec();
    spec.loop = true;
    Start(spec);
    ASSERT_TRUE(ReachesFrame(3));
    spec = Spec();
    spec.loop = true;
    spec.settings.at("threshold")->Set("label", "other");
    stream->Follow(spec);
    EXPECT_TRUE(test::Happens([&] { return listener.Get("detection").back().find("other") != std::string::npos; }));
}

TEST_F(StreamOf, ItIsSwitchedOffAndOn) {
    StreamSpec spec = Spec();
    spec.loop = true;
    Start(spec);
    auto const viewer = stream->Look({}, {});
    ASSERT_TRUE(ReachesFrame(1));
    EXPECT_TRUE(viewer->Draw());
    spec.enabled = false;
    stream->Follow(spec);
    ASSERT_TRUE(Reaches(State::Disabled));
    EXPECT_FALSE(viewer->Draw());
    EXPECT_TRUE(viewer->IsAlive());
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_live_frames{stream=\"gate\"} 0\n"));
    auto const frames = stream->GetStatus().frames;
    spec.enabled = true;
    stream->Follow(spec);
    ASSERT_TRUE(ReachesFrame(frames + 1));
    EXPECT_TRUE(viewer->Draw());
    EXPECT_EQ(stream->GetStatus().restarts, 0U);
    stream->RequestStop();
    EXPECT_FALSE(viewer->IsAlive());
    EXPECT_TRUE(test::Happens([&] { return stream->HasEnded(); }));
}

TEST_F(StreamOf, ACalibrationGivesMetresAndMayBeWrittenAnew) {
    StreamSpec spec = Spec();
    spec.loop = true;
    spec.calibration = directory / "gate.json";
    Start(spec);
    ASSERT_TRUE(Reaches(State::Waiting));
    EXPECT_THAT(stream->GetStatus().problem, HasSubstr("gate.json"));
    EXPECT_FALSE(stream->GetStatus().calibrated);
    host::calibration::WriteCalibration(spec.calibration, {.mounting = {60, 0, 4, 50}, .covariance = {}});
    ASSERT_TRUE(Reaches(State::Running));
    EXPECT_TRUE(stream->GetStatus().calibrated);
    auto const distanceOf = [](std::string const& line) {
        return boost::json::parse(line).at("objects").at(0).at("distance_m").as_double();
    };
    double const before = distanceOf(listener.Get("detection").front());
    EXPECT_GT(before, 0);
    host::calibration::WriteCalibration(spec.calibration, {.mounting = {60, 0, 400, 50}, .covariance = {}});
    EXPECT_TRUE(test::Happens([&] { return distanceOf(listener.Get("detection").back()) > 50 * before; }));
}

TEST_F(StreamOf, NothingIsDrawnUnlessSomebodyLooks) {
    StreamSpec spec = Spec();
    spec.loop = true;
    Start(spec);
    ASSERT_TRUE(ReachesFrame(5));
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_stage_seconds_count{stage=\"draw\",stream=\"gate\"} 0\n"));
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_viewers{stream=\"gate\"} 0\n"));
    auto viewer = stream->Look({}, {});
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_viewers{stream=\"gate\"} 1\n"));
    auto const picture = viewer->Draw();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->size.width, 64U);
    viewer.reset();
    auto const seen = stream->GetStatus().frames;
    ASSERT_TRUE(ReachesFrame(seen + 5));
    EXPECT_THAT(Metrics(), HasSubstr("qel_stream_stage_seconds_count{stage=\"draw\",stream=\"gate\"} 1\n"));
}

TEST_F(StreamOf, AStreamOfTheSameNameBeginsWhenTheFormerHasEnded) {
    std::atomic<bool> mayEnd = false;
    std::atomic<int> opened = 0;
    auto const open = [&](auto const&...) {
        ++opened;
        return std::make_unique<test::FakeSource>(
            [&]() -> std::optional<host::FrameSource::Frame> {
                while (!mayEnd) std::this_thread::sleep_for(1ms);
                return std::nullopt;
            },
            true);
    };
    auto const make = [&](std::shared_ptr<Stream> former) {
        return std::make_shared<Stream>(
            Spec({}), StreamParts{.open = open, .makeAlgorithms = {}, .bus = bus, .metrics = metrics, .retry = retry},
            std::move(former));
    };
    auto former = make(nullptr);
    ASSERT_TRUE(test::Happens([&] { return opened == 1; }));
    former->RequestStop();
    auto const latter = make(former);
    former.reset();
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(opened, 1);
    mayEnd = true;
    EXPECT_TRUE(test::Happens([&] { return opened == 2; }));
}

}  // namespace
}  // namespace qel::serve
