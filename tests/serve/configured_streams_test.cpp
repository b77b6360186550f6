// Streams that follow a configuration file, as the server has them.

#include <boost/json/parse.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/registry.h>

#include "serve/listener.hpp"
#include "store.hpp"
#include "supervisor.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::serve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using State = StreamStatus::State;

class ConfiguredStreams : public testing::Test {
protected:
    ConfiguredStreams() {
        qel::test::WriteMovingSquare(directory / "video.mkv", {.frames = 6, .framesPerSecond = 100});
        Patch(R"({"streams": {"gate": {"source": "video.mkv", "loop": true, "algorithms": ["threshold"]}}})");
    }

    void Patch(std::string const& text) { store.Patch(boost::json::parse(text).as_object()); }

    bool LastLineHas(std::string const& stream, std::string const& text) {
        return test::Happens([&] {
            auto const lines = listener.Get("detection", stream);
            return !lines.empty() && lines.back().find(text) != std::string::npos;
        });
    }
    bool Reaches(std::string const& id, State state) {
        return test::Happens([&] {
            auto const status = supervisor.GetStatus(id);
            return status && status->state == state;
        });
    }

    qel::test::TemporaryDirectory directory;
    host::Runtime runtime;
    EventBus bus;
    test::Listener listener{bus};
    prometheus::Registry registry;
    Store store{runtime, directory / "serve.json"};
    Supervisor supervisor{runtime,
                          {[this] { return store.GetStreams(); },
                           [this](std::function<void()> handler) { return store.BindStreams(std::move(handler)); }},
                          bus,
                          registry};
};

TEST_F(ConfiguredStreams, FollowSettingsOfTheirOwnAndOfTheirAlgorithm) {
    EXPECT_TRUE(LastLineHas("gate", "\"label\":\"bright\""));
    Patch(R"({"algorithms": {"Threshold": {"label": "moving"}}})");
    EXPECT_TRUE(LastLineHas("gate", "\"label\":\"moving\""));
    Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"label": "other"}}}}})");
    EXPECT_TRUE(LastLineHas("gate", "\"label\":\"other\""));
    EXPECT_THAT(listener.GetStates("gate"), ElementsAre("starting", "running")) << "nothing was started anew";
}

TEST_F(ConfiguredStreams, ComeGoAndAreSwitchedOff) {
    ASSERT_TRUE(Reaches("gate", State::Running));
    Patch(R"({"streams": {"door": {"source": "video.mkv", "algorithms": ["threshold"]}}})");
    EXPECT_TRUE(Reaches("door", State::Ended));
    Patch(R"({"streams": {"gate": {"enabled": false}}})");
    EXPECT_TRUE(Reaches("gate", State::Disabled));
    Patch(R"({"streams": {"gate": {"enabled": true, "source": "none.mkv"}}})");
    EXPECT_TRUE(Reaches("gate", State::Waiting));
    EXPECT_THAT(supervisor.GetStatus("gate")->problem, HasSubstr("no such file: '" + (directory / "none.mkv") + "'"));
    Patch(R"({"streams": {"door": null}})");
    EXPECT_FALSE(supervisor.GetStatus("door"));
    EXPECT_EQ(supervisor.GetStatus().size(), 1U);
}

TEST_F(ConfiguredStreams, RunTheAlgorithmsThatAreNamedNow) {
    EXPECT_TRUE(LastLineHas("gate", "\"objects\":[{"));
    Patch(R"({"streams": {"gate": {"algorithms": ["invert", "threshold"]}}})");
    EXPECT_TRUE(LastLineHas("gate", "\"w\":64,")) << "the ground is bright now";
}

}  // namespace
}  // namespace qel::serve
