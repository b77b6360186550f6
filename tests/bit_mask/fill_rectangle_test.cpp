#include "qel/algorithm/bit_mask/fill_rectangle.hpp"

#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/fills.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::bit_mask {
namespace {

constexpr std::uint32_t Ones = ~0U;

TEST(FillRectangle, NeverWritesTheLastColumnOrRow) {
    BitMask mask({10, 10});
    FillRectangle(mask, {0, 0, 10, 10}, 1);
    for (unsigned int y = 0; y < 10; ++y) {
        for (unsigned int x = 0; x < 32; ++x) EXPECT_EQ(reference::Get(mask, x, y), x < 9 && y < 9) << x << ' ' << y;
    }
    mask.Fill(1);
    FillRectangle(mask, {0, 0, 10, 10}, 0);
    for (unsigned int y = 0; y < 10; ++y) {
        for (unsigned int x = 0; x < 32; ++x) EXPECT_EQ(reference::Get(mask, x, y), x >= 9 || y >= 9) << x << ' ' << y;
    }
}

TEST(FillRectangle, IsCutToTheMask) {
    BitMask mask({70, 3});
    FillRectangle(mask, {-5, -9, 3, 1}, 1);
    EXPECT_EQ(mask.GetData(), (std::vector<std::uint32_t>{0xE0000000U, 0, 0, 0, 0, 0, 0, 0, 0}));
    mask.Fill(0);
    for (geometry::Rectangle<int> const rect : {geometry::Rectangle<int>{70, 0, 90, 2},
                                                {69, 0, 70, 2},
                                                {0, 2, 70, 9},
                                                {5, 0, 5, 2},
                                                {5, 0, 2, 2},
                                                {5, 1, 9, 0},
                                                {-9, 0, 0, 2}}) {
        FillRectangle(mask, rect, 1);
        EXPECT_EQ(mask, BitMask({70, 3})) << rect.x0;
    }
}

TEST(FillRectangle, NeverWritesAMaskWithoutWords) {
    constexpr int Least = std::numeric_limits<int>::min();
    constexpr int Most = std::numeric_limits<int>::max();
    for (BitMask::Size const size : {BitMask::Size{0, 0}, {0, 5}, {5, 0}, {Ones, 5}}) {
        BitMask mask(size);
        FillRectangle(mask, {Least, Least, Most, Most}, 1);
        FillRectangle(mask, {-1, -1, 1, 1}, 1);
        EXPECT_TRUE(mask.GetData().empty());
    }
}

TEST(FillRectangle, AgreesWithThePixelsOnRandomRectangles) {
    std::mt19937 random(23);
    constexpr int Corners[] = {std::numeric_limits<int>::min(), -1, 0, 31, 32, 33, 64, std::numeric_limits<int>::max()};
    auto const corner = [&](unsigned int extent) {
        if (random() % 4 == 0) return Corners[random() % std::size(Corners)];
        return static_cast<int>(random() % (extent + 10)) - 5;
    };
    for (int i = 0; i < 20000; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 140), reference::Draw(random, 1, 6)};
        BitMask mask = reference::Noise(size, 50, random);
        geometry::Rectangle<int> const rect{corner(size.width), corner(size.height), corner(size.width),
                                            corner(size.height)};
        unsigned int const value = random() % 2;
        BitMask const expected = reference::FillRectangle(mask, rect, value);
        FillRectangle(mask, rect, value);
        ASSERT_EQ(mask, expected) << size << ' ' << rect.x0 << ' ' << rect.y0 << ' ' << rect.x1 << ' ' << rect.y1;
    }
}

}  // namespace
}  // namespace qel::algorithm::bit_mask
