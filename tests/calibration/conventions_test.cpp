// The conventions as the drawing in docs/calibration.md shows them.

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "qel/algorithm/calibration/engine.hpp"

namespace qel::algorithm::calibration {
namespace {

constexpr geometry::Dimension<int, 2> Picture{1200, 800};
constexpr float Height = 5.0F, Fov = 40.0F;

float Tan(float degrees) { return static_cast<float>(std::tan(degrees * std::numbers::pi / 180)); }

/// A position of the picture: shares of its width and height from the top left.
Engine::Point At(double x, double y) {
    return {{static_cast<unsigned short>(x * 65536)}, {static_cast<unsigned short>(y * 65536)}};
}

/// What a camera sees of the ground at a position of the picture.
geometry::Point<float, 2> Ground(float tilt, float roll, double x, double y) {
    Engine engine;
    engine.SetCalibrationParams({tilt, roll, Height * boost::units::si::meters, Fov});
    engine.GetDistance(At(0.5, 0.9), At(0.6, 0.9), Picture);  // builds the model
    return engine.UnprojectPoint(At(x, y));
}

constexpr double Bottom = 65535.0 / 65536, Right = Bottom;

TEST(CalibrationConventions, TheCentreSeesTheGroundAtTheTiltBelowTheHorizon) {
    for (float const tilt : {10.0F, 30.0F, 45.0F, 60.0F}) {
        auto const centre = Ground(tilt, 0, 0.5, 0.5);
        EXPECT_NEAR(centre.x, 0, 1e-4);
        EXPECT_NEAR(centre.y, Height / Tan(tilt), 1e-3 * Height / Tan(tilt));
    }
}

TEST(CalibrationConventions, TheBottomSeesTheGroundHalfAFieldOfViewFurtherDown) {
    EXPECT_NEAR(Ground(30, 0, 0.5, Bottom).y, Height / Tan(50), 1e-3);
    EXPECT_NEAR(Ground(30, 0, 0.5, 0).y, Height / Tan(10), 1e-2);
}

TEST(CalibrationConventions, WithoutTiltTheHorizonRunsThroughTheCentre) {
    EXPECT_NEAR(Ground(0, 0, 0.5, Bottom).y, Height / Tan(20), 1e-2);
    EXPECT_GT(Ground(0, 0, 0.5, 0.501).y, 100 * Height);  // far away just below it
    EXPECT_LT(Ground(0, 0, 0.5, 0.499).y, 0);             // above it no ground is seen: what comes out lies behind
}

TEST(CalibrationConventions, WithATiltOf90TheCameraLooksStraightDown) {
    EXPECT_NEAR(Ground(90, 0, 0.5, 0.5).x, 0, 1e-3);
    EXPECT_NEAR(Ground(90, 0, 0.5, 0.5).y, 0, 1e-3);
    EXPECT_NEAR(Ground(90, 0, 0.5, 0).y, Height * Tan(20), 1e-2);        // ahead is at the top of the picture
    EXPECT_NEAR(Ground(90, 0, 0.5, Bottom).y, -Height * Tan(20), 1e-2);  // behind the camera at the bottom
    EXPECT_NEAR(Ground(90, 0, Right, 0.5).x, Height * Tan(20) * 1200 / 800, 1e-2);
}

TEST(CalibrationConventions, GroundXGrowsToTheRightOfThePicture) {
    EXPECT_GT(Ground(30, 0, 0.7, 0.5).x, 0);
    EXPECT_LT(Ground(30, 0, 0.3, 0.5).x, 0);
}

TEST(CalibrationConventions, PositiveRollRaisesTheRightSideOfTheScene) {
    // What lies to the right is seen higher: at one height of the picture, the right shows nearer ground than the left.
    auto const left = Ground(30, 8, 0.3, 0.5), right = Ground(30, 8, 0.7, 0.5);
    EXPECT_LT(right.y, left.y);
    // By the angle itself: along a line that rises to the right by 8 degrees, the ground is as far ahead everywhere.
    double const rise = 0.2 * 1200 / 800 * Tan(8);
    EXPECT_NEAR(Ground(30, 8, 0.7, 0.5 - rise).y, Ground(30, 8, 0.3, 0.5 + rise).y, 0.01);
}

}  // namespace
}  // namespace qel::algorithm::calibration
