#include "common/from_yuv.hpp"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace qel::plugin {
namespace {

using media::colour::Rgb;

TEST(FromYuv, KnowsBlackWhiteAndTheEndsOfTheRange) {
    EXPECT_EQ(FromYuv(16, 128, 128), (Rgb{0, 0, 0}));
    EXPECT_EQ(FromYuv(235, 128, 128), (Rgb{255, 255, 255}));
    EXPECT_EQ(FromYuv(0, 128, 128), (Rgb{0, 0, 0}));
    EXPECT_EQ(FromYuv(255, 128, 128), (Rgb{255, 255, 255}));
}

/// A component by the definition, rounded: luma over 219 levels, chroma over 224.
int Level(double y, double colour) {
    return static_cast<int>(std::lround(255 * std::clamp((y - 16) / 219 + colour / 224, 0.0, 1.0)));
}

TEST(FromYuv, IsWithinALevelOfTheDefinitionForEveryColour) {
    for (int y = 0; y < 256; y += 3) {
        for (int u = 0; u < 256; u += 5) {
            for (int v = 0; v < 256; v += 5) {
                Rgb const rgb = FromYuv(y, u, v);
                double const blue = u - 128, red = v - 128;
                ASSERT_NEAR(rgb.red, Level(y, 1.402 * red), 1) << y << ' ' << u << ' ' << v;
                ASSERT_NEAR(rgb.green, Level(y, -0.344136 * blue - 0.714136 * red), 1) << y << ' ' << u << ' ' << v;
                ASSERT_NEAR(rgb.blue, Level(y, 1.772 * blue), 1) << y << ' ' << u << ' ' << v;
            }
        }
    }
}

}  // namespace
}  // namespace qel::plugin
