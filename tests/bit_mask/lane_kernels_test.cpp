// Every set of lane loops that the machine can run, against a walk over the pixels.
#include "bit_mask/lane_kernels.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Lanes = std::vector<Lane>;

bool Get(Lane const* lanes, std::ptrdiff_t x) { return (lanes[x / 64] >> (63 - x % 64) & 1U) != 0; }

/// Lanes of noise between an empty one at either end.
Lanes Noise(std::size_t count, unsigned int percent, std::mt19937& random) {
    Lanes lanes(count + 2);
    for (std::size_t i = 1; i <= count; ++i) {
        for (int bit = 0; bit < 64; ++bit) lanes[i] = lanes[i] << 1 | (random() % 100 < percent ? 1U : 0U);
    }
    return lanes;
}

class LaneLoops : public testing::TestWithParam<LaneKernels> {};

TEST_P(LaneLoops, FindWhatTouchesTheRowsAboveAndBelow) {
    std::mt19937 random(54);
    for (std::size_t const count : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 17U, 30U}) {
        for (unsigned int const percent : {0U, 1U, 10U, 60U}) {
            Lanes const above = Noise(count, percent, random), below = Noise(count, percent, random);
            Lanes const fillable = Noise(count, 70, random), region = Noise(count, 30, random);
            Lanes seeds(count, 7);
            bool const any = GetParam().findSeeds(above.data() + 1, below.data() + 1, fillable.data() + 1,
                                                  region.data() + 1, seeds.data(), count);
            bool expectedAny = false;
            for (std::ptrdiff_t x = 64; x < static_cast<std::ptrdiff_t>(64 * (count + 1)); ++x) {
                bool touched = false;
                for (std::ptrdiff_t at = x - 1; at <= x + 1; ++at) {
                    touched = touched || Get(above.data(), at) || Get(below.data(), at);
                }
                bool const expected = touched && Get(fillable.data(), x) && !Get(region.data(), x);
                expectedAny = expectedAny || expected;
                ASSERT_EQ(Get(seeds.data(), x - 64), expected) << count << " lanes, " << x - 64;
            }
            EXPECT_EQ(any, expectedAny);
        }
    }
}

TEST_P(LaneLoops, FillEachLaneRightwards) {
    std::mt19937 random(55);
    for (std::size_t const count : {1U, 3U, 4U, 5U, 8U, 9U, 30U}) {
        for (unsigned int const percent : {30U, 90U, 98U, 100U}) {
            Lanes const fillable = Noise(count, percent, random);
            Lanes seeds = Noise(count, 5, random);
            for (std::size_t i = 0; i < seeds.size(); ++i) seeds[i] &= fillable[i];
            Lanes filled(seeds.begin() + 1, seeds.end() - 1), leading(count, 7);
            GetParam().fillRightwards(fillable.data() + 1, filled.data(), leading.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                bool inside = false, first = true;
                for (std::ptrdiff_t x = 0; x < 64; ++x) {
                    bool const passable = Get(&fillable[i + 1], x);
                    inside = passable && (inside || Get(&seeds[i + 1], x));
                    first = first && passable;
                    ASSERT_EQ(Get(&filled[i], x), inside) << count << " lanes, " << x;
                    ASSERT_EQ(Get(&leading[i], x), first) << count << " lanes, " << x;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, LaneLoops,
                         testing::ValuesIn(GetSupportedLaneKernels().begin(), GetSupportedLaneKernels().end()),
                         [](auto const& kernels) { return kernels.param.name; });

TEST(LaneKernels, OfTheFastestKindAreChosen) {
    EXPECT_STREQ(GetSupportedLaneKernels().front().name, "plain");
    EXPECT_EQ(&GetLaneKernels(), &GetSupportedLaneKernels().back());
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
