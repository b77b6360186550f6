// Every set of Boolean word loops that the machine can run, from any place in a line of the cache.
#include "bit_mask/combine_kernels.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace qel::algorithm::bit_mask {
namespace {

using Words = std::vector<std::uint32_t>;

class Combination : public testing::TestWithParam<CombineKernels> {};

TEST_P(Combination, ChangesTheWordsItIsGivenAndNoOthers) {
    std::mt19937 random(71);
    for (std::size_t const count : {0U, 1U, 2U, 7U, 8U, 15U, 16U, 17U, 31U, 33U, 100U}) {
        for (std::size_t before = 0; before < 17; ++before) {
            Words words(before + count + 20), others(count);
            for (auto& word : words) word = static_cast<std::uint32_t>(random());
            for (auto& word : others) word = static_cast<std::uint32_t>(random());
            auto const check = [&](CombineKernel kernel, auto operation) {
                Words combined(words), expected(words);
                kernel(combined.data() + before, others.data(), count);
                for (std::size_t i = 0; i < count; ++i) {
                    expected[before + i] = operation(words[before + i], others[i]);
                }
                EXPECT_EQ(combined, expected) << count << " words, " << before << " before";
            };
            check(GetParam().unite, [](std::uint32_t a, std::uint32_t b) { return a | b; });
            check(GetParam().subtract, [](std::uint32_t a, std::uint32_t b) { return a & ~b; });
            check(GetParam().intersect, [](std::uint32_t a, std::uint32_t b) { return a & b; });
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, Combination,
                         testing::ValuesIn(GetSupportedCombineKernels().begin(), GetSupportedCombineKernels().end()),
                         [](auto const& kernels) { return kernels.param.name; });

TEST(CombineKernels, OfTheFastestKindAreChosen) {
    EXPECT_STREQ(GetSupportedCombineKernels().front().name, "plain");
    EXPECT_EQ(&GetCombineKernels(), &GetSupportedCombineKernels().back());
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
