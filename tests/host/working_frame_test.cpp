#include "working_frame.hpp"

#include <cstdint>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace qel::host {
namespace {

using Frame = WorkingFrame::Frame;
using Writable = WorkingFrame::Writable;
using media::ColourFormat;

Frame MakeFrame(std::uint8_t level, ColourFormat format = ColourFormat::Grey8, unsigned int width = 5) {
    Writable const frame(format, width, 3, media::TimePoint(std::chrono::nanoseconds(level)),
                         media::video::frame::Rotation::None);
    for (auto const& plane : frame.GetPlanes()) {
        if (plane) std::fill_n(static_cast<std::uint8_t*>(plane.GetBuffer()), plane.GetSize(), level);
    }
    return MakeReadOnly(frame);
}

template <class AnyFrame>
int LevelOf(AnyFrame const& frame) {
    return *static_cast<std::uint8_t const*>(frame.GetPlane(0).GetBuffer());
}

void SetLevel(Writable const& frame, std::uint8_t level) {
    *static_cast<std::uint8_t*>(frame.GetPlane(0).GetBuffer()) = level;
}

TEST(WorkingFrame, IsTheFrameItselfAsLongAsNobodyChangesIt) {
    WorkingFrame working;
    EXPECT_FALSE(working.Get());
    Frame const frame = MakeFrame(7);
    working.Start(frame);
    EXPECT_EQ(working.Get(), frame);
    EXPECT_EQ(working.GetCopies(), 0U);
}

TEST(WorkingFrame, IsCopiedOnceHoweverManyChangeIt) {
    WorkingFrame working;
    Frame const frame = MakeFrame(7);
    working.Start(frame);
    for (std::uint8_t level = 20; level < 23; ++level) {
        SetLevel(working.Change(), level);
        EXPECT_EQ(LevelOf(working.Get()), level);
    }
    EXPECT_EQ(working.GetCopies(), 1U);
    EXPECT_EQ(LevelOf(frame), 7) << "the pixels of others stay";
    EXPECT_EQ(working.Get().GetTimestamp(), frame.GetTimestamp());
    EXPECT_EQ(working.Get().GetSize(), frame.GetSize());
}

TEST(WorkingFrame, IsCopiedAgainWhenSomebodyKeptItInBetween) {
    WorkingFrame working;
    working.Start(MakeFrame(7));
    SetLevel(working.Change(), 20);
    Frame const kept = working.Get();
    SetLevel(working.Change(), 21);
    EXPECT_EQ(working.GetCopies(), 2U);
    EXPECT_EQ(LevelOf(kept), 20);
    EXPECT_EQ(LevelOf(working.Get()), 21);
    Writable const greedy = working.Change();
    EXPECT_EQ(working.GetCopies(), 2U);
    SetLevel(working.Change(), 22);
    EXPECT_EQ(working.GetCopies(), 3U) << "somebody may still write";
    SetLevel(greedy, 99);
    EXPECT_EQ(LevelOf(working.Get()), 22);
}

TEST(WorkingFrame, UsesItsMemoryAgainUnlessSomebodyHoldsIt) {
    WorkingFrame working;
    working.Start(MakeFrame(7));
    void const* const memory = working.Change().GetPlane(0).GetBuffer();
    working.Start(MakeFrame(8));
    EXPECT_EQ(LevelOf(working.Get()), 8) << "not what is left in the memory";
    EXPECT_EQ(working.Change().GetPlane(0).GetBuffer(), memory);
    EXPECT_EQ(LevelOf(working.Get()), 8);
    EXPECT_EQ(working.Get().GetTimestamp(), media::TimePoint(std::chrono::nanoseconds(8)));
    std::optional<Frame> shown = working.Get();
    working.Start(MakeFrame(9));
    EXPECT_NE(working.Change().GetPlane(0).GetBuffer(), memory);
    EXPECT_EQ(LevelOf(*shown), 8);
}

TEST(WorkingFrame, TakesFramesOfAnotherSizeOrFormatInBetween) {
    WorkingFrame working;
    for (unsigned int width : {5U, 500U, 3U}) {
        for (int format = 0; format < 5; ++format) {
            Frame const frame = MakeFrame(static_cast<std::uint8_t>(30 + format), ColourFormat(format), width);
            working.Start(frame);
            Writable const copy = working.Change();
            EXPECT_EQ(copy.GetColourFormat(), frame.GetColourFormat());
            EXPECT_EQ(copy.GetSize(), frame.GetSize());
            EXPECT_EQ(LevelOf(copy), 30 + format);
        }
    }
    working.Start({});
    EXPECT_FALSE(working.Change());
}

TEST(WithTimestamp, SharesThePixels) {
    Frame const frame = MakeFrame(7);
    media::TimePoint const later(std::chrono::seconds(3));
    Frame const moved = WithTimestamp(frame, later);
    EXPECT_EQ(moved.GetTimestamp(), later);
    EXPECT_EQ(moved.GetPlane(0).GetBuffer(), frame.GetPlane(0).GetBuffer());
    EXPECT_EQ(WithTimestamp(moved, frame.GetTimestamp()), frame);
}

TEST(WorkingFrame, GivesFramesThatOutliveItOnOtherThreads) {
    std::vector<std::thread> threads;
    {
        WorkingFrame working;
        for (std::uint8_t level = 0; level < 50; ++level) {
            working.Start(MakeFrame(200));
            SetLevel(working.Change(), level);
            threads.emplace_back([frame = working.Get(), level] { EXPECT_EQ(LevelOf(frame), level); });
        }
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace qel::host
