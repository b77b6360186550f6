#include "stream_frames.hpp"

#include <vector>

#include <gtest/gtest.h>

#include "serve/fake_source.hpp"

namespace qel::serve {
namespace {

using namespace std::chrono_literals;

TEST(StreamFrames, HaveTimesThatGoOnOverAllSources) {
    StreamFrames frames;
    auto first = test::MakeFrames(3);
    auto continued = frames.Continue(*first);
    EXPECT_EQ(continued->Read()->GetTimestamp().time_since_epoch(), 0ms);
    EXPECT_FALSE(continued->GetGap()) << "nothing was before";
    EXPECT_EQ(continued->Read()->GetTimestamp().time_since_epoch(), 40ms);

    auto second = test::MakeFrames(2);
    continued = frames.Continue(*second);
    auto const later = continued->Read()->GetTimestamp().time_since_epoch();
    ASSERT_TRUE(continued->GetGap());
    EXPECT_EQ(later, 40ms + *continued->GetGap());
    EXPECT_EQ(continued->Read()->GetTimestamp().time_since_epoch(), later + 40ms);
    EXPECT_FALSE(continued->GetGap());
    EXPECT_FALSE(continued->Read());
}

TEST(StreamFrames, AreCountedAsLongAsTheirPixelsAreHeld) {
    StreamFrames frames;
    std::vector<host::FrameSource::Frame> kept;
    {
        auto const source = test::MakeFrames(3);
        auto const continued = frames.Continue(*source);
        kept.push_back(continued->Read().value());
        kept.push_back(continued->Read().value());
        EXPECT_EQ(frames.GetHeld(), 2);
        kept.push_back(kept.front());
        EXPECT_EQ(frames.GetHeld(), 2) << "a copy shares its pixels";
        (void)continued->Read();
        EXPECT_EQ(frames.GetHeld(), 2);
    }
    kept.erase(kept.begin());
    EXPECT_EQ(frames.GetHeld(), 2);
    EXPECT_EQ(*static_cast<std::uint8_t const*>(kept.front().GetPlane(0).GetBuffer()), 50);
    kept.clear();
    EXPECT_EQ(frames.GetHeld(), 0);
}

}  // namespace
}  // namespace qel::serve
