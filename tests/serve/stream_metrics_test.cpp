#include "stream_metrics.hpp"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

namespace qel::serve {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string ToText(prometheus::Registry const& registry) {
    return prometheus::TextSerializer().Serialize(registry.Collect());
}

TEST(StreamMetrics, CountWhatHappens) {
    prometheus::Registry registry;
    StreamMetrics metrics(registry, "gate");
    metrics.CountFrame(2);
    metrics.CountFrame(0);
    metrics.NoteTime("decode", 3ms);
    metrics.NoteTime("algorithm", 3s);
    metrics.NoteTime("another", 3s);
    StreamStatus status{.state = StreamStatus::State::Running, .framesPerSecond = 25, .restarts = 3};
    status.losses = {.interruptions = 4, .stalls = 1, .returns = 2, .away = 1500ms, .droppedFrames = 9};
    metrics.NoteStatus(status, 5, 2, 750ms);
    metrics.NoteStatus(status, 5, 2, 750ms);
    EXPECT_THAT(ToText(registry), AllOf(HasSubstr("qel_stream_frames_total{stream=\"gate\"} 2\n"),
                                        HasSubstr("qel_stream_objects_total{stream=\"gate\"} 2\n"),
                                        HasSubstr("qel_stream_dropped_frames_total{stream=\"gate\"} 9\n"),
                                        HasSubstr("qel_stream_interruptions_total{stream=\"gate\"} 4\n"),
                                        HasSubstr("qel_stream_stalls_total{stream=\"gate\"} 1\n"),
                                        HasSubstr("qel_stream_reconnects_total{stream=\"gate\"} 2\n"),
                                        HasSubstr("qel_stream_restarts_total{stream=\"gate\"} 3\n"),
                                        HasSubstr("qel_stream_away_seconds_total{stream=\"gate\"} 1.5\n"),
                                        HasSubstr("qel_stream_delay_seconds_total{stream=\"gate\"} 0.75\n")));
    EXPECT_THAT(ToText(registry),
                AllOf(HasSubstr("qel_stream_running{stream=\"gate\"} 1\n"),
                      HasSubstr("qel_stream_frames_per_second{stream=\"gate\"} 25\n"),
                      HasSubstr("qel_stream_live_frames{stream=\"gate\"} 5\n"),
                      HasSubstr("qel_stream_viewers{stream=\"gate\"} 2\n"), Not(HasSubstr("another"))));
    EXPECT_THAT(ToText(registry), AllOf(HasSubstr("stage=\"decode\",stream=\"gate\",le=\"0.005\"} 1\n"),
                                        HasSubstr("stage=\"algorithm\",stream=\"gate\",le=\"2\"} 0\n")));
}

TEST(StreamMetricsBook, GivesOneStreamOneSetWhichGoesWithTheLastWhoCounts) {
    prometheus::Registry registry;
    StreamMetricsBook book(registry);
    auto former = book.Get("gate");
    auto const other = book.Get("door");
    former->CountFrame(0);
    auto latter = book.Get("gate");
    former.reset();
    latter->CountFrame(0);
    EXPECT_THAT(ToText(registry), HasSubstr("qel_stream_frames_total{stream=\"gate\"} 2\n"));
    latter.reset();
    EXPECT_THAT(ToText(registry), AllOf(Not(HasSubstr("gate")), HasSubstr("door")));
    latter = book.Get("gate");
    EXPECT_THAT(ToText(registry), HasSubstr("qel_stream_frames_total{stream=\"gate\"} 0\n"));
}

}  // namespace
}  // namespace qel::serve
