// The layout and the padding rules as docs/bit_mask.md tells them.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/bit_mask/check_rectangle.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"
#include "qel/algorithm/bit_mask/fill_polygon.hpp"
#include "qel/algorithm/bit_mask/fill_rectangle.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"
#include "qel/algorithm/bit_mask/flood_fill.hpp"
#include "qel/algorithm/bit_mask/threshold.hpp"
#include "qel/algorithm/connected_components.hpp"

namespace qel::algorithm {
namespace {

constexpr unsigned int Width = 40, Height = 3;
constexpr std::uint32_t Padding = 0x00FFFFFFU;  // of a row's second word

bool IsSet(BitMask const& mask, unsigned int x, unsigned int y) {
    return (mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32) & 1U) != 0;
}

/// The padding bits of each row.
std::vector<std::uint32_t> PaddingOf(BitMask const& mask) {
    std::vector<std::uint32_t> padding;
    for (std::size_t y = 0; y < Height; ++y) padding.push_back(mask.GetData()[2 * y + 1] & Padding);
    return padding;
}

BitMask MakeFilled() {
    BitMask mask({Width, Height});
    mask.Fill(1);
    return mask;
}

TEST(MaskLayout, TheFirstPixelOfAWordIsItsHighestBit) {
    BitMask mask({Width, Height});
    EXPECT_EQ(mask.GetStride(), 2U);
    EXPECT_EQ(mask.GetData().size(), 6U);
    mask.GetData()[0] = 0x80000001U;
    mask.GetData()[5] = 0x01000000U;
    for (unsigned int y = 0; y < Height; ++y) {
        for (unsigned int x = 0; x < Width; ++x) {
            EXPECT_EQ(IsSet(mask, x, y), (y == 0 && (x == 0 || x == 31)) || (y == 2 && x == 39)) << x << ", " << y;
        }
    }
}

TEST(MaskLayout, PaddingIsWrittenByTheOperationsThatSaySo) {
    struct Case {
        char const* name;
        std::function<void(BitMask&)> act;
        std::array<std::uint32_t, Height> padding;
    };
    constexpr std::uint32_t Full = Padding;
    std::vector<std::uint8_t> const bright(Width * Height, 255);
    BitMask pixels({Width, Height});
    bit_mask::Threshold(bright.data(), Width, {Width, Height}, 128, pixels);
    geometry::Polygon<double> wide;
    for (auto const& [x, y] : std::array<std::array<double, 2>, 4>{{{-5, -5}, {100, -5}, {100, 5}, {-5, 5}}}) {
        wide.push_back({x, y});
    }
    Case const cases[] = {
        {"new", [](BitMask&) {}, {0, 0, 0}},
        {"Fill", [](BitMask& m) { m.Fill(1); }, {Full, Full, Full}},
        {"EraseRect",
         [](BitMask& m) {
             m.EraseRect(geometry::Rectangle<int>{38, 0, 40, 3}, 1);
         },
         {Full, Full, 0}},
        {"Union", [](BitMask& m) { m.Union(MakeFilled()); }, {Full, Full, Full}},
        {"Threshold",
         [&](BitMask& m) {
             bit_mask::Threshold(bright.data(), Width, {Width, Height}, 128, m);
         },
         {0, 0, 0}},
        {"FillRectangle",
         [](BitMask& m) {
             bit_mask::FillRectangle(m, {-9, -9, 99, 99}, 1);
         },
         {0, 0, 0}},
        {"FillPolygons",
         [&](BitMask& m) { bit_mask::FillPolygons(m, boost::span<geometry::Polygon<double> const>(&wide, 1), 1); },
         {0, 0, 0}},
        {"FillScanLine", [](BitMask& m) { bit_mask::FillScanLine(m.GetData().data(), 0, 39, 1); }, {0, 0, 0}},
        {"FloodFill8Way",
         [](BitMask& m) {
             bit_mask::FloodFill8Way(MakeFilled(), m, {5, 1}, 1);
         },
         {0, 0, 0}},
        {"Dilate8Way",
         [&](BitMask& m) { bit_mask::Dilate8Way(pixels.GetData().data(), m.GetData().data(), Height, 2); },
         {0x00800000U, 0x00800000U, 0x00800000U}},
        {"Erode8Way",
         [](BitMask& m) { bit_mask::Erode8Way(MakeFilled().GetData().data(), m.GetData().data(), Height, 2); },
         {0, Full & ~1U, 0}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        BitMask mask({Width, Height});
        c.act(mask);
        EXPECT_EQ(PaddingOf(mask), std::vector<std::uint32_t>(c.padding.begin(), c.padding.end()));
    }
}

TEST(MaskLayout, PaddingIsNotReadByTheOperationsThatSaySo) {
    BitMask mask({Width, Height});
    for (std::size_t y = 0; y < Height; ++y) mask.GetData()[2 * y + 1] = Padding;
    EXPECT_FALSE(bit_mask::CheckRectangle(mask.GetData().data(), mask.GetSize(), {30, 0, 40, 3}));
    std::vector<ConnectedComponents::Blob> blobs;
    EXPECT_EQ(ConnectedComponents().Connect8Way(mask, 1, blobs), 0U);
}

}  // namespace
}  // namespace qel::algorithm
