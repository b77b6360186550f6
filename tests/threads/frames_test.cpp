// Frames that share pixels, made, copied, moved and dropped on several threads.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qel/media/video/frame.hpp"
#include "threads/together.hpp"

namespace qel::test {
namespace {

using Frame = media::video::FrameBase<void>;

Frame Allocate() {
    Frame frame(media::ColourFormat::Nv12, 33, 7, {}, media::video::frame::Rotation::None);
    for (std::size_t i = 0; i < 2; ++i) std::memset(frame.GetPlane(i).GetBuffer(), 7, frame.GetPlane(i).GetSize());
    return frame;
}

unsigned int Sum(Frame const& frame) {
    unsigned int sum = 0;
    for (std::size_t i = 0; i < 2; ++i) {
        auto const* const bytes = static_cast<std::uint8_t const*>(frame.GetPlane(i).GetBuffer());
        for (std::size_t at = 0; at < frame.GetPlane(i).GetSize(); ++at) sum += bytes[at];
    }
    return sum;
}

TEST(Frames, ShareAllocatedPixelsAcrossThreads) {
    unsigned int const expected = Sum(Allocate());
    for (int round = 0; round < Rounds(200); ++round) {
        std::vector<Frame> shares(4, Allocate());
        std::vector<std::function<void()>> actions;
        for (Frame& share : shares) {
            actions.push_back([&share, expected] {
                // The last one to go, whichever it is, frees what the others have read.
                Frame own = std::move(share);
                for (int i = 0; i < 20; ++i) {
                    Frame const copy(own);
                    own = copy;
                }
                EXPECT_EQ(Sum(own), expected);
            });
        }
        RunTogether(actions);
    }
}

TEST(Frames, PassThroughAQueueAndAreDroppedElsewhere) {
    std::mutex mutex;
    std::vector<Frame> queue;
    std::atomic<bool> isDone = false;
    std::atomic<int> taken = 0;
    int const count = Rounds(1000);
    auto const make = [&] {
        for (int i = 0; i < count; ++i) {
            Frame const frame = Allocate();
            std::lock_guard<std::mutex> const lock(mutex);
            queue.push_back(frame);
        }
        isDone = true;
    };
    auto const take = [&] {
        for (bool isLast = false; !isLast;) {
            isLast = isDone;
            std::vector<Frame> got;
            {
                std::lock_guard<std::mutex> const lock(mutex);
                got.swap(queue);
            }
            for (Frame const& frame : got) EXPECT_NE(Sum(frame), 0U);
            taken += static_cast<int>(got.size());
        }
    };
    RunTogether({make, take, take});
    EXPECT_EQ(taken, count);
}

}  // namespace
}  // namespace qel::test
