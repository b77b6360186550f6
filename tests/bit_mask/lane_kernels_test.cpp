// Every set of lane loops that the machine can run, against a walk over the pixels.
#include "bit_mask/lane_kernels.hpp"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

using Lanes = std::vector<Lane>;

constexpr std::size_t Counts[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 30, 32};

bool Get(Lane const* lanes, std::ptrdiff_t x) { return (lanes[x / 64] >> x % 64 & 1U) != 0; }

/// One row of lanes after a group of empty ones, and with what fills up its last group and one lane more behind it.
class Row {
public:
    explicit Row(std::size_t count) : count_(count), lanes_(LaneGroup + (count + LaneGroup) / LaneGroup * LaneGroup) {}
    Row(std::size_t count, unsigned int percent, std::mt19937& random) : Row(count) {
        for (std::size_t i = 0; i < 64 * count; ++i) {
            Begin()[i / 64] |= Lane{random() % 100 < percent ? 1U : 0U} << i % 64;
        }
    }

    Lane* Begin() { return lanes_.data() + LaneGroup; }
    bool Get(std::size_t x) { return (Begin()[x / 64] >> x % 64 & 1U) != 0; }
    bool IsEmptyAround() const {
        return std::all_of(lanes_.begin(), lanes_.begin() + LaneGroup, [](Lane lane) { return lane == 0; }) &&
               std::all_of(lanes_.begin() + static_cast<std::ptrdiff_t>(LaneGroup + count_), lanes_.end(),
                           [](Lane lane) { return lane == 0; });
    }

private:
    std::size_t count_;
    Lanes lanes_;
};

class LaneLoops : public testing::TestWithParam<LaneKernels> {};

TEST_P(LaneLoops, GrowByWholeRunsThatTouchTheRowsAboveAndBelow) {
    std::mt19937 random(54);
    for (int round = 0; round < 40; ++round) {
        for (std::size_t const count : Counts) {
            unsigned int const percent = random() % 3 == 0 ? 0 : reference::Draw(random, 0, 10);
            Row above(count, percent, random), below(count, percent / 2, random);
            Row fillable(count, reference::Draw(random, 30, 100), random), region(count);
            // The region holds whole runs.
            for (std::size_t x = 0; x < 64 * count; ++x) {
                bool const inside =
                    fillable.Get(x) && (x > 0 && fillable.Get(x - 1) ? region.Get(x - 1) : random() % 9 == 0);
                if (inside) region.Begin()[x / 64] |= Lane{1} << x % 64;
            }
            std::vector<bool> expected(64 * count);
            std::vector<bool> changed(count);
            std::size_t changedLanes = 0;
            for (std::size_t x = 0; x < 64 * count;) {
                std::size_t end = x;
                bool filled = false;
                for (; end < 64 * count && fillable.Get(end); ++end) {
                    filled = filled || region.Get(end);
                    for (std::size_t at = end - (end > 0 ? 1 : 0); at <= end + 1; ++at) {
                        filled = filled || above.Get(at) || below.Get(at);
                    }
                }
                for (; x < end; ++x) {
                    expected[x] = filled;
                    if (filled && !region.Get(x) && !changed[x / 64]) {
                        changed[x / 64] = true;
                        ++changedLanes;
                    }
                }
                ++x;
            }
            Lanes scratch(2 * (count + LaneGroup), 0xABCDEF);
            ASSERT_EQ(
                GetParam().grow(above.Begin(), below.Begin(), fillable.Begin(), region.Begin(), scratch.data(), count),
                changedLanes);
            for (std::size_t x = 0; x < 64 * count; ++x)
                ASSERT_EQ(region.Get(x), expected[x]) << count << " lanes, " << x;
            ASSERT_TRUE(region.IsEmptyAround());
        }
    }
}

TEST_P(LaneLoops, CountRowsUntilFillablePixelsDiffer) {
    std::mt19937 random(60);
    constexpr std::size_t Rows = 7;
    for (std::size_t const words : {1U, 2U, 15U, 16U, 17U, 24U, 31U, 33U, 60U}) {
        for (std::size_t change = 1; change < Rows; ++change) {
            // The same pixels are fillable in all rows before the change and, but for one, in all from there on; those
            // that are not are clear in src or set in dst.
            std::vector<std::uint32_t> fillable(words), src, dst;
            for (auto& word : fillable) word = static_cast<std::uint32_t>(random());
            for (std::size_t row = 0; row < Rows; ++row) {
                if (row == change) fillable[random() % words] ^= 1U << random() % 32;
                for (std::uint32_t const word : fillable) {
                    dst.push_back(static_cast<std::uint32_t>(random()) & ~word);
                    src.push_back((static_cast<std::uint32_t>(random()) & dst.back()) | word);
                }
            }
            auto const count = [&](std::size_t row, std::ptrdiff_t step, std::size_t rows) {
                return GetParam().countRepeated(&src[row * words], &dst[row * words], words, step, rows);
            };
            auto const step = static_cast<std::ptrdiff_t>(words);
            EXPECT_EQ(count(0, step, Rows - 1), change - 1) << words;
            EXPECT_EQ(count(0, step, change - 1), change - 1) << words;
            EXPECT_EQ(count(Rows - 1, -step, Rows - 1), Rows - 1 - change) << words;
        }
    }
}

TEST_P(LaneLoops, TakeWordsAndGiveThemBack) {
    std::mt19937 random(55);
    for (std::size_t const words : {1U, 2U, 3U, 15U, 16U, 17U, 24U, 31U, 32U, 33U, 60U, 120U}) {
        std::vector<std::uint32_t> src(words), dst(words);
        for (auto& word : src) word = static_cast<std::uint32_t>(random());
        for (auto& word : dst) word = static_cast<std::uint32_t>(random());
        std::size_t const pitch = ((words + 1) / 2 + LaneGroup) / LaneGroup * LaneGroup;
        Lanes lanes(pitch, 0xABCDEF), region(pitch, 0xABCDEF);
        GetParam().load(src.data(), dst.data(), words, lanes.data(), region.data(), pitch);
        EXPECT_EQ(region, Lanes(pitch));
        for (std::size_t i = (words + 1) / 2; i < pitch; ++i) EXPECT_EQ(lanes[i], 0);
        std::vector<std::uint32_t> both(dst);
        GetParam().store(lanes.data(), both.data(), words);
        for (std::size_t i = 0; i < words; ++i) {
            EXPECT_EQ(both[i], src[i] | dst[i]);
            for (std::size_t bit = 0; bit < 32; ++bit) {
                bool const expected = ((src[i] & ~dst[i]) >> (31 - bit) & 1U) != 0;
                ASSERT_EQ(Get(lanes.data(), static_cast<std::ptrdiff_t>(32 * i + bit)), expected);
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
