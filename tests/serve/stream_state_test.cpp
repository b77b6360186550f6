#include "stream_state.hpp"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <boost/json/parse.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "serve/fake_source.hpp"

namespace qel::serve {
namespace {

using namespace std::chrono_literals;
using State = StreamStatus::State;
using testing::ElementsAre;
using testing::IsEmpty;

class OfStreamState : public testing::Test {
protected:
    /// What was told since the last call, each as "STATE PROBLEM FRAMES".
    std::vector<std::string> Told() {
        std::vector<std::string> told;
        while (auto const event = events->Take()) {
            EXPECT_EQ(event->kind, "stream");
            EXPECT_EQ(event->stream, "gate");
            auto const status = boost::json::parse(event->data);
            told.push_back(std::string(status.at("state").as_string()) + " " +
                           std::string(status.at("problem").as_string()) + " " +
                           std::to_string(status.at("frames").to_number<int>()));
        }
        return told;
    }
    void CountFrame(std::size_t objects = 0) { state.CountFrame(test::MakeGreyFrame(0ms), objects); }

    EventBus bus;
    std::shared_ptr<EventBus::Subscription> events = bus.Subscribe({}, {});
    StreamState state{"gate", bus};
};

TEST_F(OfStreamState, TellsEachStateAndProblemOnce) {
    EXPECT_THAT(Told(), IsEmpty());
    state.Tell(State::Starting);
    state.Tell(State::Starting);
    EXPECT_THAT(Told(), ElementsAre("starting  0")) << "the first one, too";
    state.Tell(State::Waiting, "no such file");
    state.Tell(State::Waiting, "no such file");
    state.Tell(State::Waiting, "no permission");
    EXPECT_THAT(Told(), ElementsAre("waiting no such file 0", "waiting no permission 0"));
    state.TellStill(State::Starting);
    EXPECT_THAT(Told(), ElementsAre("starting no permission 0"));
    CountFrame();
    CountFrame();
    EXPECT_THAT(Told(), ElementsAre("running  1")) << "a frame ends the problem";
}

TEST_F(OfStreamState, CountsFramesWithTheirObjectsAndSize) {
    CountFrame(2);
    CountFrame(3);
    state.CountRestart();
    state.SetCalibrated(true);
    StreamStatus const status = state.Get();
    EXPECT_EQ(status.id, "gate");
    EXPECT_EQ(status.frames, 2U);
    EXPECT_EQ(state.GetFrames(), 2U);
    EXPECT_EQ(status.objects, 5U);
    EXPECT_EQ(status.size, (geometry::Dimension<unsigned int, 2>{16, 8}));
    EXPECT_EQ(status.restarts, 1U);
    EXPECT_TRUE(status.calibrated);
    state.SetCalibrated(false);
    EXPECT_FALSE(state.Get().calibrated);
}

TEST_F(OfStreamState, HasARateWhileItRunsOnly) {
    for (int i = 0; i < 10; ++i) CountFrame();
    EXPECT_GT(state.Get().framesPerSecond, 0);
    for (State const ended : {State::Waiting, State::Ended, State::Disabled, State::Starting}) {
        CountFrame();
        CountFrame();
        state.Tell(ended);
        EXPECT_EQ(state.Get().framesPerSecond, 0);
    }
}

TEST_F(OfStreamState, AddsUpWhatItsSourcesLostAndHowFarBehindTheyWere) {
    host::Losses const first{1, 2, 3, 4, 5s, 6}, second{10, 20, 30, 40, 50s, 60};
    state.NoteSource({7, 7, 7, 7, 7s, 7}, 7ms);
    state.NoteSource(first, 100ms);
    EXPECT_EQ(state.Get().losses, first) << "a source counts for itself";
    state.EndSource();
    EXPECT_EQ(state.Get().losses, first);
    EXPECT_EQ(state.GetDelay(), 100ms);
    state.NoteSource(second, 10ms);
    EXPECT_EQ(state.Get().losses, (host::Losses{11, 22, 33, 44, 55s, 66}));
    EXPECT_EQ(state.GetDelay(), 110ms);
    state.EndSource();
    state.EndSource();
    EXPECT_EQ(state.Get().losses, (host::Losses{11, 22, 33, 44, 55s, 66}));
    EXPECT_EQ(state.GetDelay(), 110ms);
}

TEST_F(OfStreamState, HangsOnlyWhereItIsAtTheFrameThatItWasSeenAt) {
    struct Case {
        State before;
        bool hangs;
    };
    for (Case const& c : {Case{State::Starting, true},
                          {State::Running, true},
                          {State::Waiting, false},
                          {State::Ended, false},
                          {State::Disabled, false}}) {
        SCOPED_TRACE(ToText(c.before));
        CountFrame();
        state.Tell(c.before);
        Told();
        auto const frames = state.GetFrames();
        state.TellOfHanging(frames - 1, "hangs");
        EXPECT_THAT(Told(), IsEmpty()) << "it has gone on";
        state.TellOfHanging(frames, "hangs");
        EXPECT_EQ(Told().size(), c.hangs ? 1U : 0U);
        EXPECT_EQ(state.Get().problem, c.hangs ? "hangs" : "");
        EXPECT_EQ(state.Get().state, c.hangs ? State::Waiting : c.before);
        CountFrame();
        EXPECT_EQ(state.Get().state, State::Running) << "it did go on";
        EXPECT_EQ(state.Get().problem, "");
    }
}

TEST_F(OfStreamState, TellsLastWhatItIsInTheEndWhicheverThreadTellsOfIt) {
    std::atomic<bool> isOver = false;
    std::thread supervisor([&] {
        while (!isOver) state.TellOfHanging(state.GetFrames(), "hangs");
    });
    std::string last;
    for (int i = 0; i < 300; ++i) {
        CountFrame();
        if (i % 3 == 0) state.Tell(State::Waiting, "failed");
        for (std::string const& told : Told()) last = told;
    }
    isOver = true;
    supervisor.join();
    for (std::string const& told : Told()) last = told;
    StreamStatus const status = state.Get();
    EXPECT_EQ(last.substr(0, last.rfind(' ')), std::string(ToText(status.state)) + " " + status.problem);
}

}  // namespace
}  // namespace qel::serve
