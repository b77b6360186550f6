#include "open_stream.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/registry.h>

#include "error.hpp"
#include "looped_source.hpp"
#include "serve/listener.hpp"
#include "support/message_of.hpp"
#include "support/rtsp_camera.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::serve {
namespace {

using testing::HasSubstr;
using State = StreamStatus::State;

std::unique_ptr<host::FrameSource> Open(StreamSpec const& spec) {
    return OpenStream(
        spec, {media::ColourFormat::Grey8}, [] { return false; }, [](host::SourceNews, std::string const&) {});
}

TEST(OpenStream, PlaysAFileOnceOrOverAndOver) {
    qel::test::TemporaryDirectory const directory;
    std::string const video = directory / "video.mkv";
    qel::test::WriteMovingSquare(video, {.frames = 3});
    auto const once = Open({.id = "gate", .source = video});
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(once->Read());
    EXPECT_FALSE(once->Read());
    EXPECT_FALSE(once->IsLive());
    auto const looped = Open({.id = "gate", .source = "file://" + video, .loop = true});
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(looped->Read());
    EXPECT_FALSE(looped->IsLive());
}

TEST(OpenStream, FailsForAFileThatIsNotThere) {
    EXPECT_EQ(qel::test::MessageOf<host::Error>([] { (void)Open({.id = "gate", .source = "/no/file.avi"}); }),
              "no such file: '/no/file.avi'");
}

TEST(OpenStream, ComesBackToACameraThatWasAway) {
    qel::test::RtspCamera camera;
    EventBus bus;
    test::Listener const listener(bus);
    prometheus::Registry registry;
    Stream stream({.id = "gate", .source = camera.GetUri()},
                  {.open = OpenStream,
                   .makeAlgorithms = {},
                   .bus = bus,
                   .metrics = std::make_shared<StreamMetrics>(registry, "gate")});
    auto const reaches = [&](State state) { return test::Happens([&] { return stream.GetStatus().state == state; }); };
    ASSERT_TRUE(reaches(State::Running));
    EXPECT_EQ(stream.GetStatus().size.width, 320U);
    camera.Kill();
    ASSERT_TRUE(reaches(State::Waiting));
    EXPECT_THAT(stream.GetStatus().problem, HasSubstr("trying again in"));
    camera.Start();
    ASSERT_TRUE(reaches(State::Running));
    EXPECT_EQ(stream.GetStatus().losses.interruptions, 1U);
    EXPECT_EQ(stream.GetStatus().restarts, 0U);
    EXPECT_EQ(stream.GetStatus().problem, "");
}

}  // namespace
}  // namespace qel::serve
