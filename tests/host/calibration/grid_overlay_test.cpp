#include "calibration/grid_overlay.hpp"

#include <algorithm>

#include <gtest/gtest.h>

#include "calibration/ground_grid.hpp"

namespace qel::host::calibration {
namespace {

constexpr std::uint32_t Black = 0;

bool IsDrawnOn(Picture const& picture, unsigned int y) {
    auto const row = picture.pixels.begin() + static_cast<std::ptrdiff_t>(y) * picture.size.width;
    return std::any_of(row, row + picture.size.width, [](std::uint32_t pixel) { return (pixel & 0xFFFFFFU) != Black; });
}

TEST(DrawGroundGrid, DrawsItsLinesWhereTheFrameShowsThemAlsoOnAScaledPicture) {
    Mounting<double> const camera{17, 0, 7, 30};
    auto const lines = MakeGroundGrid(camera, {768, 576});
    auto const fifteen =
        std::find_if(lines.begin(), lines.end(), [](auto const& line) { return line.label == "15 m"; });
    ASSERT_NE(fifteen, lines.end());
    for (unsigned int const scale : {1U, 2U}) {
        Picture picture({768 / scale, 576 / scale});
        DrawGroundGrid(picture, {768, 576}, camera);
        auto const y = static_cast<unsigned int>(fifteen->labelAt.y) / scale;
        EXPECT_EQ(std::count_if(picture.pixels.begin() + static_cast<std::ptrdiff_t>(y) * picture.size.width,
                                picture.pixels.begin() + static_cast<std::ptrdiff_t>(y + 1) * picture.size.width,
                                [](std::uint32_t pixel) { return (pixel & 0xFFFFFFU) != Black; }),
                  picture.size.width)
            << "a camera that is not rolled sees lines across as rows";
        EXPECT_FALSE(IsDrawnOn(picture, 0)) << "the sky";
    }
}

}  // namespace
}  // namespace qel::host::calibration
