#include "calibration/ground_grid.hpp"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "host/calibration/scene.hpp"

namespace qel::host::calibration {
namespace {

using namespace test;

std::vector<std::string> GetLabels(std::vector<GridLine> const& lines) {
    std::vector<std::string> labels;
    for (GridLine const& line : lines) {
        if (!line.label.empty()) labels.push_back(line.label);
    }
    return labels;
}

TEST(GroundGrid, LiesOnTheGroundInMeshesOfARoundNumberOfMetres) {
    Mounting<double> const camera{17, 2, 7, 30};
    std::vector<GridLine> const lines = MakeGroundGrid(camera, Picture);
    auto const labels = GetLabels(lines);
    EXPECT_NE(std::find(labels.begin(), labels.end(), "15 m"), labels.end());
    EXPECT_EQ(labels.back(), "60 m");
    auto const fifteen =
        std::find_if(lines.begin(), lines.end(), [](auto const& line) { return line.label == "15 m"; });
    Pixel const left = Project(camera, Picture, -60, 15), ahead = Project(camera, Picture, 0, 15);
    EXPECT_NEAR(fifteen->from.x, left.x, 1e-6);
    EXPECT_NEAR(fifteen->from.y, left.y, 1e-6);
    EXPECT_NEAR(fifteen->labelAt.x, ahead.x, 1e-6);
    EXPECT_NEAR(fifteen->labelAt.y, ahead.y, 1e-6);
    EXPECT_EQ(lines.size() - labels.size(), 25U) << "lines ahead, to both sides";
}

TEST(GroundGrid, IsAboutAsWideMeshedAsTheCameraIsHigh) {
    for (auto const& [height, furthest] :
         {std::pair{0.5, "6 m"}, {1.0, "12 m"}, {3.0, "24 m"}, {7.0, "60 m"}, {30.0, "240 m"}, {300.0, "600 m"}}) {
        EXPECT_EQ(GetLabels(MakeGroundGrid({20, 0, height, 50}, Picture)).back(), furthest);
    }
}

TEST(GroundGrid, EndsBeforeThePlaneThroughTheCamera) {
    for (double const tilt : {1.0, 20.0, 60.0, 90.0, 110.0}) {
        for (GridLine const& line : MakeGroundGrid({tilt, 5, 6, 60}, Picture)) {
            for (Pixel const pixel : {line.from, line.to}) {
                EXPECT_TRUE(std::isfinite(pixel.x) && std::isfinite(pixel.y));
                EXPECT_LT(std::abs(pixel.x) + std::abs(pixel.y), 1e6) << tilt;
            }
        }
    }
    EXPECT_EQ(GetLabels(MakeGroundGrid({90, 0, 6, 60}, Picture)).front(), "-60 m") << "behind and ahead alike";
}

TEST(GroundGrid, IsEmptyWhereNoGroundIsSeen) { EXPECT_TRUE(MakeGroundGrid({-90, 0, 6, 60}, Picture).empty()); }

}  // namespace
}  // namespace qel::host::calibration
