#include "qel/algorithm/bit_mask/threshold.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "bit_mask/threshold_kernels.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Bytes = std::vector<std::uint8_t>;

class ThresholdKernels : public testing::TestWithParam<NamedThresholdKernel> {};

TEST_P(ThresholdKernels, SetThePixelsAboveTheThresholdAndClearThePadding) {
    std::mt19937 random(91);
    for (unsigned int width = 1; width <= 200; ++width) {
        for (unsigned int const threshold : {0U, 1U, 127U, 128U, 254U, 255U}) {
            Bytes pixels(width);
            for (auto& pixel : pixels) {
                pixel = static_cast<std::uint8_t>(random() % 3 == 0 ? threshold + random() % 3 - 1 : random());
            }
            std::size_t const count = (width + 31) / 32;
            std::vector<std::uint32_t> words(count + 1, 0xC0FFEE11U);
            GetParam().pack(pixels.data(), width, static_cast<std::uint8_t>(threshold), words.data());
            EXPECT_EQ(words[count], 0xC0FFEE11U);
            for (unsigned int x = 0; x < 32 * count; ++x) {
                bool const expected = x < width && pixels[x] > threshold;
                ASSERT_EQ((words[x / 32] >> (31 - x % 32) & 1U) != 0, expected)
                    << width << ' ' << x << ' ' << threshold;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, ThresholdKernels,
                         testing::ValuesIn(GetSupportedThresholdKernels().begin(),
                                           GetSupportedThresholdKernels().end()),
                         [](auto const& kernel) { return kernel.param.name; });

TEST(Threshold, PacksRowsAPitchApart) {
    Bytes const pixels{9, 10, 11, 99, 99, 12, 0, 255, 99, 99};
    BitMask mask({3, 2});
    mask.Fill(1);
    Threshold(pixels.data(), 5, {3, 2}, 10, mask);
    EXPECT_EQ(mask.GetData(), (std::vector<std::uint32_t>{0x20000000U, 0xA0000000U}));
}

TEST(Threshold, GivesTheMaskTheSizeOfTheImage) {
    Bytes const pixels(80, 200);
    BitMask mask({500, 500});
    Threshold(pixels.data(), 40, {40, 2}, 199, mask);
    EXPECT_EQ(mask.GetSize(), (BitMask::Size{40, 2}));
    EXPECT_EQ(mask.GetData(), (std::vector<std::uint32_t>{~0U, 0xFF000000U, ~0U, 0xFF000000U}));
    mask.GetData().resize(1);
    Threshold(pixels.data(), 40, {40, 2}, 200, mask);
    EXPECT_EQ(mask, BitMask({40, 2}));
    Threshold(nullptr, 0, {0, 4}, 0, mask);
    EXPECT_EQ(mask, BitMask({0, 4}));
    Threshold(nullptr, 0, {4, 0}, 0, mask);
    EXPECT_EQ(mask, BitMask({4, 0}));
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
