#include "stream_status.hpp"

#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

namespace qel::serve {
namespace {

TEST(StreamStatus, IsToldAsJson) {
    StreamStatus status{.id = "gate",
                        .state = StreamStatus::State::Waiting,
                        .problem = "no such file: '\xff'",
                        .frames = 7,
                        .objects = 3,
                        .framesPerSecond = 12.5,
                        .size = {768, 576},
                        .restarts = 2,
                        .losses = {.interruptions = 6,
                                   .stalls = 5,
                                   .returns = 4,
                                   .attempts = 9,
                                   .away = std::chrono::milliseconds(1500),
                                   .droppedFrames = 8},
                        .calibrated = true};
    EXPECT_EQ(boost::json::serialize(ToJson(status)),
              "{\"id\":\"gate\",\"state\":\"waiting\",\"problem\":\"no such file: '\xEF\xBF\xBD'\",\"frames\":7,"
              "\"objects\":3,\"frames_per_second\":1.25E1,\"width\":768,\"height\":576,\"restarts\":2,\"losses\":{"
              "\"interruptions\":6,\"stalls\":5,\"returns\":4,\"attempts\":9,\"away_s\":1.5E0,\"dropped_frames\":8},"
              "\"calibrated\":true}");
}

TEST(StreamStatus, HasAWordForEachState) {
    using State = StreamStatus::State;
    for (auto const& [state, word] : {std::pair(State::Disabled, "disabled"), std::pair(State::Starting, "starting"),
                                      std::pair(State::Running, "running"), std::pair(State::Waiting, "waiting"),
                                      std::pair(State::Ended, "ended")}) {
        EXPECT_EQ(ToText(state), word);
    }
}

}  // namespace
}  // namespace qel::serve
