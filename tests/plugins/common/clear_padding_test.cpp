#include "common/clear_padding.hpp"

#include <gtest/gtest.h>

namespace qel::plugin {
namespace {

using algorithm::BitMask;

TEST(ClearPadding, KeepsThePixels) {
    for (unsigned int const width : {1U, 31U, 32U, 33U, 63U, 64U, 65U}) {
        BitMask mask({width, 3});
        for (auto& word : mask.GetData()) word = ~0U;
        ClearPadding(mask);
        for (std::size_t y = 0; y < 3; ++y) {
            for (std::size_t x = 0; x < 32 * mask.GetStride(); ++x) {
                bool const isSet = (mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32) & 1) != 0;
                ASSERT_EQ(isSet, x < width) << width << ": " << x << ", " << y;
            }
        }
    }
}

TEST(ClearPadding, TakesAMaskWithoutPixels) {
    BitMask mask;
    ClearPadding(mask);
    EXPECT_TRUE(mask.GetData().empty());
}

}  // namespace
}  // namespace qel::plugin
