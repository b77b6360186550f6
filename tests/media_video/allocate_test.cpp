#include "media/video/allocate.hpp"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

// The sanitizers' allocators answer an impossible size with a null pointer, as malloc does, and end nothing.
extern "C" __attribute__((visibility("default"))) char const* __asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" __attribute__((visibility("default"))) char const* __tsan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

/// The aligned blocks that are alive in this process, with their sizes; frames are the only ones to make any.
struct Heap {
    std::mutex mutex;
    std::map<void*, std::size_t> blocks;
    int allocations = 0;
    int frees = 0;
} heap;

void FreeAligned(void* block) noexcept {
    std::lock_guard<std::mutex> const lock(heap.mutex);
    if (block == nullptr) return;
    EXPECT_EQ(heap.blocks.erase(block), 1U);
    ++heap.frees;
    std::free(block);
}

}  // namespace

// Replaced for the whole program, libqel_algorithm.so included.
void* operator new(std::size_t size, std::align_val_t alignment, std::nothrow_t const&) noexcept {
    void* block = nullptr;
    if (posix_memalign(&block, static_cast<std::size_t>(alignment), size) != 0) return nullptr;
    std::lock_guard<std::mutex> const lock(heap.mutex);
    heap.blocks[block] = size;
    ++heap.allocations;
    return block;
}
void operator delete(void* block, std::align_val_t) noexcept { FreeAligned(block); }
void operator delete(void* block, std::align_val_t, std::nothrow_t const&) noexcept { FreeAligned(block); }

namespace qel::media::video {
namespace {

using frame::Rotation;

TimePoint const Noon(std::chrono::nanoseconds(1772366400000000001));

template <class T>
class AllocatedFrame : public testing::Test {
protected:
    AllocatedFrame() { heap.allocations = heap.frees = 0; }
    ~AllocatedFrame() override { EXPECT_TRUE(heap.blocks.empty()); }

    static FrameBase<T> Make(ColourFormat format, unsigned int width, unsigned int height) {
        return FrameBase<T>(format, width, height, Noon, Rotation::Clockwise180);
    }
};

using Pixels = testing::Types<void, void const>;
TYPED_TEST_SUITE(AllocatedFrame, Pixels);

struct PlaneShape {
    std::uint64_t size;
    std::int64_t stride;
};
struct Case {
    ColourFormat format;
    unsigned int width, height;
    std::vector<PlaneShape> planes;
};

constexpr ColourFormat Grey = ColourFormat(0), Rgb = ColourFormat(1), Bgr = ColourFormat(2), Yuv = ColourFormat(3),
                       Nv12 = ColourFormat(4);

Case const Cases[] = {
    {Grey, 1, 1, {{4, 4}}},
    {Grey, 3, 2, {{8, 4}}},
    {Grey, 4, 2, {{8, 4}}},
    {Grey, 5, 2, {{16, 8}}},
    {Grey, 640, 480, {{307200, 640}}},
    {Rgb, 1, 1, {{4, 4}}},
    {Rgb, 2, 2, {{16, 8}}},
    {Bgr, 4, 3, {{36, 12}}},
    {Yuv, 5, 1, {{16, 16}}},
    {Nv12, 1, 1, {{4, 4}, {4, 4}}},
    {Nv12, 2, 2, {{8, 4}, {4, 4}}},
    {Nv12, 5, 3, {{24, 8}, {16, 8}}},
    {Nv12, 7, 4, {{32, 8}, {16, 8}}},
    {Nv12, 768, 576, {{442368, 768}, {221184, 768}}},
    {Grey, 0, 2, {{0, 0}}},
    {Grey, 2, 0, {{0, 4}}},
    {Rgb, 0, 0, {{0, 0}}},
    {Nv12, 0, 3, {{0, 0}, {0, 0}}},
    {Nv12, 3, 0, {{0, 4}, {0, 4}}},
};

TYPED_TEST(AllocatedFrame, LaysOutTheRowsOfEachColourFormat) {
    for (Case const& c : Cases) {
        SCOPED_TRACE(std::to_string(static_cast<int>(c.format)) + ": " + std::to_string(c.width) + " x " +
                     std::to_string(c.height));
        auto const frame = this->Make(c.format, c.width, c.height);
        for (std::size_t i = 0; i < 4; ++i) {
            SCOPED_TRACE(i);
            bool const used = i < c.planes.size();
            EXPECT_EQ(frame.GetPlane(i).GetSize(), used ? c.planes[i].size : 0);
            EXPECT_EQ(frame.GetPlane(i).GetStride(), used ? c.planes[i].stride : 0);
            EXPECT_EQ(frame.GetPlane(i).GetBuffer() != nullptr, used);
        }
        EXPECT_EQ(static_cast<bool>(frame), c.width != 0 && c.height != 0);
    }
}

TYPED_TEST(AllocatedFrame, PadsEachRowToTheNextMultipleOfFourBytes) {
    auto const padded = [](std::int64_t bytes) {
        while (bytes % 4 != 0) ++bytes;
        return bytes;
    };
    for (unsigned int width = 0; width < 40; ++width) {
        for (unsigned int height = 0; height < 5; ++height) {
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
            std::int64_t pairs = 0, pairRows = 0;
            for (unsigned int x = 0; x < width; x += 2) ++pairs;
            for (unsigned int y = 0; y < height; y += 2) ++pairRows;
            for (ColourFormat const format : {Grey, Rgb, Bgr, Yuv, Nv12}) {
                bool const isThreeBytes = format == Rgb || format == Bgr || format == Yuv;
                auto const frame = this->Make(format, width, height);
                std::int64_t const stride = padded(isThreeBytes ? 3L * width : width);
                EXPECT_EQ(frame.GetPlane(0).GetStride(), stride);
                EXPECT_EQ(frame.GetPlane(0).GetSize(), static_cast<std::uint64_t>(stride * height));
                std::int64_t const pairStride = format == Nv12 ? padded(2 * pairs) : 0;
                EXPECT_EQ(frame.GetPlane(1).GetStride(), pairStride);
                EXPECT_EQ(frame.GetPlane(1).GetSize(), static_cast<std::uint64_t>(pairStride * pairRows));
            }
        }
    }
}

TYPED_TEST(AllocatedFrame, PlacesThePlanesBackToBackBehindAHeaderOf16BytesInOneAlignedBlock) {
    for (Case const& c : Cases) {
        SCOPED_TRACE(std::to_string(static_cast<int>(c.format)) + ": " + std::to_string(c.width) + " x " +
                     std::to_string(c.height));
        heap.allocations = 0;
        auto const frame = this->Make(c.format, c.width, c.height);
        ASSERT_EQ(heap.allocations, 1);
        ASSERT_EQ(heap.blocks.size(), 1U);
        auto const& [block, blockSize] = *heap.blocks.begin();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U);
        std::size_t offset = 16;
        for (std::size_t i = 0; i < c.planes.size(); ++i) {
            EXPECT_EQ(frame.GetPlane(i).GetBuffer(), static_cast<char*>(block) + offset);
            offset += c.planes[i].size;
        }
        EXPECT_EQ(blockSize, offset);
    }
}

TYPED_TEST(AllocatedFrame, HoldsWhatItWasAskedFor) {
    auto const check = [](FrameBase<TypeParam> const& frame) {
        EXPECT_EQ(frame.GetColourFormat(), ColourFormat::Nv12);
        EXPECT_EQ(frame.GetWidth(), 5U);
        EXPECT_EQ(frame.GetHeight(), 3U);
        EXPECT_EQ(frame.GetTimestamp(), Noon);
        EXPECT_EQ(frame.GetRotation(), Rotation::Clockwise90);
        EXPECT_TRUE(frame.GetRef());
        EXPECT_TRUE(frame.GetUnref());
    };
    geometry::Dimension<unsigned int, 2> const size{5, 3};
    check(FrameBase<TypeParam>(ColourFormat::Nv12, 5, 3, Noon, Rotation::Clockwise90));
    check(FrameBase<TypeParam>(ColourFormat::Nv12, size, Noon, Rotation::Clockwise90));
    check(Allocate<TypeParam>(ColourFormat::Nv12, size, Noon, Rotation::Clockwise90));
}

TYPED_TEST(AllocatedFrame, RefusesAnUnknownColourFormatBeforeItAllocates) {
    for (int const format : {5, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(format);
        try {
            this->Make(ColourFormat(format), 2, 2);
            FAIL();
        } catch (std::invalid_argument const& error) {
            EXPECT_STREQ(error.what(), "Unsupported colour format");
        }
        EXPECT_THROW((FrameBase<TypeParam>(ColourFormat(format), geometry::Dimension<unsigned int, 2>{2, 2}, Noon,
                                           Rotation::None)),
                     std::invalid_argument);
    }
    EXPECT_EQ(heap.allocations, 0);
}

TYPED_TEST(AllocatedFrame, ReportsASizeThatNoMemoryHolds) {
    constexpr unsigned int Max = std::numeric_limits<unsigned int>::max();
    EXPECT_THROW(this->Make(Grey, Max, Max), std::bad_alloc);               // fits 64 bits, but no memory
    EXPECT_THROW(this->Make(Rgb, Max, Max), std::bad_alloc);                // stride x height does not fit
    EXPECT_THROW(this->Make(Bgr, 2863311530, 2147483648), std::bad_alloc);  // 2^64, which wraps to nothing
    EXPECT_THROW(this->Make(Nv12, Max, Max), std::bad_alloc);               // nor does the sum of the planes
    EXPECT_EQ(heap.allocations, 0);
}

TYPED_TEST(AllocatedFrame, CountsRowsOfMoreThan32Bits) {
    auto const layout = detail::GetLayout(Nv12, {4294967295, 4294967295});
    EXPECT_EQ(layout.planes[0].stride, 4294967296U);
    EXPECT_EQ(layout.planes[1].stride, 4294967296U);
    EXPECT_EQ(layout.planes[1].rows, 2147483648U);
    EXPECT_EQ(detail::GetLayout(Rgb, {4294967295, 1}).planes[0].stride, 12884901888U);
}

TYPED_TEST(AllocatedFrame, FreesItsBlockOnceWithTheLastFrameThatSharesIt) {
    {
        auto first = std::make_unique<FrameBase<TypeParam>>(this->Make(Nv12, 5, 3));
        auto const second = std::make_unique<FrameBase<TypeParam>>(*first);
        auto third = std::make_unique<FrameBase<TypeParam>>(*first);
        auto const fourth = std::make_unique<FrameBase<TypeParam>>(std::move(*third));
        third.reset();
        first.reset();
        EXPECT_EQ(heap.frees, 0);
        EXPECT_EQ(second->GetPlanes(), fourth->GetPlanes());
    }
    EXPECT_EQ(heap.allocations, 1);
    EXPECT_EQ(heap.frees, 1);
}

TYPED_TEST(AllocatedFrame, StartsItsCountAtOne) {
    auto const frame = this->Make(Grey, 4, 4);
    std::uint32_t count = 0;
    std::memcpy(&count, heap.blocks.begin()->first, sizeof(count));
    EXPECT_EQ(count, 1U);
    frame.GetRef()();
    std::memcpy(&count, heap.blocks.begin()->first, sizeof(count));
    EXPECT_EQ(count, 2U);
    frame.GetUnref()();
    EXPECT_EQ(heap.frees, 0);
}

TYPED_TEST(AllocatedFrame, IsReleasedByAssignmentAndKeptBySelfAssignment) {
    auto frame = this->Make(Grey, 4, 4);
    auto& same = frame;
    frame = same;
    EXPECT_EQ(heap.frees, 0);
    frame = std::move(same);
    EXPECT_EQ(heap.frees, 0);
    frame = FrameBase<TypeParam>();
    EXPECT_EQ(heap.frees, 1);
}

TYPED_TEST(AllocatedFrame, MayBeSharedByThreadsThatCopyAndDestroyIt) {
    std::vector<std::thread> threads;
    for (int round = 0; round < 20; ++round) {
        auto frame = this->Make(Nv12, 16, 16);
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([copy = frame, t]() mutable {
                auto const pixel = static_cast<char const*>(copy.GetPlane(0).GetBuffer()) + t;
                if constexpr (!std::is_const_v<TypeParam>) *const_cast<char*>(pixel) = static_cast<char>(t);
                for (int i = 0; i < 200; ++i) {
                    FrameBase<TypeParam> another = copy;
                    copy = std::move(another);
                }
            });
        }
        frame = FrameBase<TypeParam>();
        for (std::thread& thread : threads) thread.join();
        threads.clear();
    }
    EXPECT_EQ(heap.allocations, 20);
    EXPECT_EQ(heap.frees, 20);
}

}  // namespace
}  // namespace qel::media::video
