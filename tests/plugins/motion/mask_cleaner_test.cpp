#include "mask_cleaner.hpp"

#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace qel::motion {
namespace {

using algorithm::BitMask;

/// A mask as one bool a pixel, with 3 x 3 operations that read clear pixels outside.
struct Pixels {
    int width, height;
    std::vector<bool> set;

    bool At(int x, int y) const {
        return x >= 0 && y >= 0 && x < width && y < height && set[static_cast<std::size_t>(y * width + x)];
    }

    /// Dilation, or erosion, once.
    Pixels Step(bool dilate) const {
        Pixels result{width, height, std::vector<bool>(set.size())};
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int neighbours = 0;
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) neighbours += At(x + dx, y + dy) ? 1 : 0;
                }
                result.set[static_cast<std::size_t>(y * width + x)] = dilate ? neighbours > 0 : neighbours == 9;
            }
        }
        return result;
    }
};

BitMask Pack(Pixels const& pixels) {
    BitMask mask({static_cast<unsigned int>(pixels.width), static_cast<unsigned int>(pixels.height)});
    for (int y = 0; y < pixels.height; ++y) {
        for (int x = 0; x < pixels.width; ++x) {
            std::size_t const word = static_cast<std::size_t>(y) * mask.GetStride() + static_cast<std::size_t>(x / 32);
            if (pixels.At(x, y)) mask.GetData()[word] |= 0x80000000U >> x % 32;
        }
    }
    return mask;
}

TEST(MaskCleaner, OpensThenClosesAsPixelsDo) {
    std::mt19937 random(5);
    MaskCleaner cleaner;
    for (int round = 0; round < 200; ++round) {
        int const width = 1 + static_cast<int>(random() % 100), height = 1 + static_cast<int>(random() % 30);
        unsigned int const density = 50 + static_cast<unsigned int>(random() % 50);
        unsigned int const openings = static_cast<unsigned int>(random() % 3);
        unsigned int const closings = static_cast<unsigned int>(random() % 3);
        Pixels pixels{width, height, std::vector<bool>(static_cast<std::size_t>(width * height))};
        for (std::size_t i = 0; i < pixels.set.size(); ++i) pixels.set[i] = random() % 100 < density;
        BitMask mask = Pack(pixels);
        cleaner.Clean(mask, openings, closings);
        for (unsigned int i = 0; i < openings; ++i) pixels = pixels.Step(false);
        for (unsigned int i = 0; i < openings + closings; ++i) pixels = pixels.Step(true);
        for (unsigned int i = 0; i < closings; ++i) pixels = pixels.Step(false);
        ASSERT_EQ(mask, Pack(pixels)) << width << " x " << height << ", " << openings << " and " << closings;
    }
}

TEST(MaskCleaner, LeavesAMaskWithoutPixelsAsItIs) {
    BitMask mask;
    MaskCleaner().Clean(mask, 1, 1);
    EXPECT_EQ(mask, BitMask());
}

}  // namespace
}  // namespace qel::motion
