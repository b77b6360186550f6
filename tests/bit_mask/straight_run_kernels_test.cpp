// Every loop that the machine can run, against a walk over the pixels.
#include "bit_mask/straight_run_kernels.hpp"

#include <random>

#include <gtest/gtest.h>

#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

class StraightRun : public testing::TestWithParam<StraightRunKernel> {};

bool IsFillable(BitMask const& src, BitMask const& dst, unsigned int x, unsigned int y) {
    return reference::Get(src, x, y) && !reference::Get(dst, x, y);
}

TEST_P(StraightRun, FillsTheRowsThatHaveJustThatRun) {
    std::mt19937 random(91);
    for (int i = 0; i < 4000; ++i) {
        unsigned int const first = reference::Draw(random, 1, 100);
        // The columns around the run, too, have to lie in so many words.
        auto const most = static_cast<unsigned int>(32 * ((first - 1) / 32 + MaxStraightWords) - 2);
        unsigned int const last = reference::Draw(random, first, random() % 2 == 0 ? first + 40 : most);
        BitMask::Size const size{reference::Draw(random, last + 2, last + 70), reference::Draw(random, 1, 24)};
        BitMask src = reference::Noise(size, 50, random), dst = reference::Noise(size, 50, random);
        for (unsigned int y = 0; y < size.height; ++y) {
            for (unsigned int x = first - 1; x <= last + 1; ++x) {
                bool const inside = x >= first && x <= last;
                // What stands beside the run is clear in src, or filled already.
                reference::Set(src, x, y, inside || random() % 2 == 0);
                reference::Set(dst, x, y, !inside);
            }
        }
        unsigned int const start = reference::Draw(random, 0, size.height - 1);
        bool const down = random() % 2 == 0;
        unsigned int const left = down ? size.height - start : start + 1;
        auto const row = [&](unsigned int k) { return down ? start + k : start - k; };
        if (random() % 4 != 0) {
            // One pixel that is not as it would have to be.
            unsigned int const x = reference::Draw(random, first - 1, last + 1);
            unsigned int const y = row(reference::Draw(random, 0, left - 1));
            bool const fillable = IsFillable(src, dst, x, y);
            reference::Set(src, x, y, true);
            reference::Set(dst, x, y, fillable);
        }
        unsigned int rows = 0;
        BitMask expected = dst;
        for (; rows < left; ++rows) {
            bool same = true;
            for (unsigned int x = first - 1; x <= last + 1; ++x) {
                same = same && IsFillable(src, dst, x, row(rows)) == (x >= first && x <= last);
            }
            if (!same) break;
            for (unsigned int x = first; x <= last; ++x) reference::Set(expected, x, row(rows));
        }
        auto const stride = static_cast<std::ptrdiff_t>(src.GetStride());
        std::size_t const offset = start * src.GetStride();
        EXPECT_EQ(GetParam().fill(src.GetData().data() + offset, dst.GetData().data() + offset, down ? stride : -stride,
                                  left, first, last),
                  rows);
        ASSERT_EQ(dst, expected) << size << " columns " << first << " to " << last;
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, StraightRun,
                         testing::ValuesIn(GetSupportedStraightRunKernels().begin(),
                                           GetSupportedStraightRunKernels().end()),
                         [](auto const& kernel) { return kernel.param.name; });

TEST(StraightRunKernel, OfTheFastestKindIsChosen) {
    EXPECT_STREQ(GetSupportedStraightRunKernels().front().name, "plain");
    EXPECT_EQ(&GetStraightRunKernel(), &GetSupportedStraightRunKernels().back());
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
