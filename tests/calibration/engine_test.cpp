#include "qel/algorithm/calibration/engine.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "calibration/scene.hpp"
#include "support/message_of.hpp"

namespace qel::algorithm::calibration {
namespace {

using qel::test::MessageOf;

using namespace test;
using Size = geometry::Dimension<int, 2>;

constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
constexpr Size Picture{768, 576};
constexpr Camera Oblique{20, 0, 5, 50};
constexpr Camera Steep{90, 0, 8, 60};

static_assert(!std::is_copy_constructible_v<Engine> && !std::is_move_constructible_v<Engine>);

std::string Invalid(int code) {
    return "Invalid calibration parameters, calibration Error Code: " + std::to_string(code);
}

float Distance(Engine const& engine, Engine::Point a, Engine::Point b, Size size = Picture) {
    return engine.GetDistance(a, b, size).value();
}

float Height(Engine const& engine, Engine::Point foot, unsigned int extent, Size size = Picture) {
    return engine.GetHeight(foot, Extent(extent), size).value();
}

TEST(Engine, IsWithoutAMountingAtFirst) {
    Engine const engine;
    EXPECT_FALSE(engine.IsCalibrationEnabled());
    EXPECT_EQ(engine.GetCalibrationStatus(), -1);
    EXPECT_EQ(engine.GetCalibrationParams(), Params());
    EXPECT_EQ(engine.UnprojectPoint(At(1234, 56789)), (geometry::Point<float, 2>{0, 0}));
}

TEST(Engine, RefusesToMeasureWithoutAMounting) {
    Engine const engine;
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Distance(engine, At(1, 2), At(3, 4)); }), Invalid(-1));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(1, 2), 3); }), Invalid(-1));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Distance(engine, At(1, 2), At(3, 4), {0, 0}); }), Invalid(-1));
}

TEST(Engine, RefusesToMeasureByAMountingThatIsNotEnabled) {
    Engine engine;
    engine.SetCalibrationParams(Params(false, 20, 0, Metres(5), 50));
    EXPECT_FALSE(engine.IsCalibrationEnabled());
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Distance(engine, At(1, 2), At(3, 4)); }), Invalid(1));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(1, 2), 3); }), Invalid(1));
    engine.SetCalibrationParams(Params(false, 90, 0, Metres(5), 50));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Distance(engine, At(1, 2), At(3, 4)); }), Invalid(0));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(1, 2), 3); }), Invalid(0));
    engine.SetCalibrationParams(Params());
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Distance(engine, At(1, 2), At(3, 4)); }), Invalid(1));
}

TEST(Engine, KeepsACopyOfTheMounting) {
    Engine engine;
    Params params(20, 1, Metres(5), 50);
    engine.SetCalibrationParams(params);
    EXPECT_EQ(engine.GetCalibrationParams(), params);
    EXPECT_TRUE(engine.IsCalibrationEnabled());
    params.SetTilt(90);
    EXPECT_EQ(engine.GetCalibrationParams().GetTilt(), 20.0F);
    engine.SetCalibrationParams(engine.GetCalibrationParams());
    EXPECT_EQ(engine.GetCalibrationParams(), Params(20, 1, Metres(5), 50));
}

TEST(Engine, TellsSteepFromObliqueViewsWhateverTheRanges) {
    struct Case {
        char const* name;
        float tilt, height, fov;
        int status;
    };
    constexpr Case Cases[] = {
        {"straight down", 90, 5, 60, 0},
        {"level", 0, 5, 60, 1},
        {"half the view and 10 degrees off vertical", 50, 5, 60, 0},
        {"a little flatter", 49.999F, 5, 60, 1},
        {"the same past vertical", 130, 5, 60, 0},
        {"a little further past", 130.001F, 5, 60, 1},
        {"negative tilts count as positive ones", -50, 5, 60, 0},
        {"tilt below the range", -31, 5, 60, 1},
        {"tilt above the range", 200, 5, 60, 1},
        {"tilt above the range, wide view", 200, 5, 201, 0},
        {"no view", 79, 5, 0, 1},
        {"no view, steep", 80, 5, 0, 0},
        {"negative view", 90, 5, -20, 0},
        {"negative view, limit below zero", 90, 5, -21, 1},
        {"view over 180 degrees", 0, 5, 181, 0},
        {"view of 160 degrees", 0, 5, 160, 0},
        {"view just below 160 degrees", 0, 5, 159.9F, 1},
        {"camera below 0.2 m", 20, 0.1F, 50, 1},
        {"camera below ground, steep", 90, -3, 50, 0},
        {"tilt not a number", Nan, 5, 50, 0},
        {"view not a number", 20, 5, Nan, 0},
        {"everything out of range", -400, -1, -400, 1},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        Engine engine;
        engine.SetCalibrationParams(Params(c.tilt, 0, Metres(c.height), c.fov));
        EXPECT_EQ(engine.GetCalibrationStatus(), c.status);
        EXPECT_NO_THROW(Distance(engine, At(20000, 60000), At(30000, 60000)));
    }
}

TEST(Engine, IgnoresTheRollInItsStatus) {
    for (float const roll : {-91.0F, -90.0F, 0.0F, 500.0F, Nan}) {
        Engine engine;
        engine.SetCalibrationParams(Params(20, roll, Metres(5), 50));
        EXPECT_EQ(engine.GetCalibrationStatus(), 1);
    }
}

TEST(Engine, MeasuresDistancesOfAProjectedScene) {
    for (Camera const& camera : {Oblique, Camera{35, 4, 3, 70}, Camera{15, -6, 12, 30}, Camera{88, 10, 6, 65}}) {
        SCOPED_TRACE(camera.tilt);
        Engine engine;
        engine.SetCalibrationParams(camera.ToParams());
        double const ahead = camera.height / std::tan(camera.tilt * 3.14159265 / 180);
        Spot const a = Project(camera, 768.0 / 576, -0.5, ahead, 0);
        Spot const b = Project(camera, 768.0 / 576, 1, ahead + 2, 0);
        EXPECT_NEAR(Distance(engine, ToPoint(a), ToPoint(b)), 2.5, 0.002);
        EXPECT_NEAR(engine.UnprojectPoint(ToPoint(a)).x, -0.5, 0.002);
        EXPECT_NEAR(engine.UnprojectPoint(ToPoint(a)).y, ahead, 0.002);
        EXPECT_NEAR(engine.UnprojectPoint(ToPoint(b)).x, 1, 0.002);
        EXPECT_NEAR(engine.UnprojectPoint(ToPoint(b)).y, ahead + 2, 0.002);
    }
}

TEST(Engine, MeasuresHeightsInObliqueViewsOfAProjectedScene) {
    for (Camera const& camera : {Oblique, Camera{35, 0, 3, 70}, Camera{15, 0, 12, 30}}) {
        for (double const tall : {0.5, 1.75, 2.4}) {
            SCOPED_TRACE(camera.tilt);
            Engine engine;
            engine.SetCalibrationParams(camera.ToParams());
            ASSERT_EQ(engine.GetCalibrationStatus(), 1);
            double const ahead = camera.height / std::tan(camera.tilt * 3.14159265 / 180);
            Spot const foot = Project(camera, 768.0 / 576, 0.8, ahead, 0);
            Spot const top = Project(camera, 768.0 / 576, 0.8, ahead, tall);
            auto const extent = static_cast<unsigned int>(std::lround(foot.y - top.y));
            EXPECT_NEAR(Height(engine, ToPoint(foot), extent), tall, 0.002);
        }
    }
}

TEST(Engine, MeasuresHeightsInSteepViewsSideways) {
    Engine engine;
    engine.SetCalibrationParams(Steep.ToParams());
    ASSERT_EQ(engine.GetCalibrationStatus(), 0);
    // Straight down from 8 m, half a picture's height is 8 m * tan(30 degrees).
    double const half = 8 * std::tan(30 * 3.14159265 / 180);
    EXPECT_NEAR(Height(engine, At(10000, 32768), 32768), half, 1e-4);
    EXPECT_NEAR(Height(engine, At(10000, 10000), 16384), half / 2, 1e-4);
    EXPECT_EQ(Height(engine, At(10000, 10000), 0), 0.0F);
    EXPECT_EQ(Height(engine, At(0, 0), 0), 0.0F);
}

TEST(Engine, TakesTheLastColumnWhereTheSidewaysExtentLeavesThePicture) {
    Engine engine;
    engine.SetCalibrationParams(Steep.ToParams());
    float const last = Height(engine, At(40000, 20000), 25535);
    EXPECT_GT(last, Height(engine, At(40000, 20000), 25534));
    EXPECT_EQ(Height(engine, At(40000, 20000), 25536), last);
    EXPECT_EQ(Height(engine, At(40000, 20000), 65535), last);
    EXPECT_EQ(Height(engine, At(65535, 20000), 65535), 0.0F);
}

TEST(Engine, ClampsAnObjectsTopToThePicture) {
    Engine engine;
    engine.SetCalibrationParams(Oblique.ToParams());
    float const full = Height(engine, At(30000, 50000), 50000);
    EXPECT_GT(full, Height(engine, At(30000, 50000), 49999));
    EXPECT_EQ(Height(engine, At(30000, 50000), 50001), full);
    EXPECT_EQ(Height(engine, At(30000, 50000), 65535), full);
}

TEST(Engine, MeasuresNothingBetweenEqualPoints) {
    for (Camera const& camera : {Oblique, Steep}) {
        Engine engine;
        engine.SetCalibrationParams(camera.ToParams());
        EXPECT_EQ(Distance(engine, At(12345, 54321), At(12345, 54321)), 0.0F);
        EXPECT_EQ(Distance(engine, At(65535, 65535), At(65535, 65535)), 0.0F);
    }
}

TEST(Engine, TakesAPointOnTheHorizonForTheOrigin) {
    // Tilted by half its field of view, this camera has the horizon exactly in the top row.
    Engine engine;
    engine.SetCalibrationParams(Params(25, 0, Metres(4), 50));
    EXPECT_EQ(Distance(engine, At(12345, 0), At(60000, 0)), 0.0F);
    EXPECT_EQ(engine.UnprojectPoint(At(12345, 0)), (geometry::Point<float, 2>{0, 0}));
    geometry::Point<float, 2> const near = engine.UnprojectPoint(At(12345, 60000));
    EXPECT_FLOAT_EQ(Distance(engine, At(12345, 60000), At(60000, 0)), std::hypot(near.x, near.y));
    EXPECT_NEAR(Height(engine, At(12345, 0), 0), 4, 1e-5) << "the line from the camera to the horizon, at the origin";
}

TEST(Engine, GivesNoNumbersForACameraOnTheGround) {
    Engine engine;
    engine.SetCalibrationParams(Params(20, 0, Metres(0), 60));
    EXPECT_TRUE(std::isnan(Distance(engine, At(0, 50000), At(1, 60000))));
}

TEST(Engine, RefusesAFootTooFarAway) {
    Engine engine;
    engine.SetCalibrationParams(Params(0, 0, Metres(5), 60));
    // Level view, half of 60 degrees above the middle row: row 32768 + n lies 5 m / tan(30) * 32768 / n ahead.
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(30000, 32768 + 500), 100); }), "Target is too far");
    EXPECT_GT(Height(engine, At(30000, 32768 + 600), 100), 0.0F);
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(30000, 32768 - 500), 100); }), "Target is too far")
        << "behind";
    EXPECT_GT(Distance(engine, At(30000, 32768 + 500), At(30000, 60000)), 500.0F) << "distances have no limit";
}

TEST(Engine, RefusesANegativeHeight) {
    Engine engine;
    engine.SetCalibrationParams(Params(0, 0, Metres(5), 60));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(30000, 10000), 100); }), "Negative height")
        << "above the horizon";
    engine.SetCalibrationParams(Params(20, 0, Metres(-5), 50));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(30000, 60000), 3000); }), "Negative height")
        << "oblique";
    engine.SetCalibrationParams(Params(90, 180, Metres(8), 60));
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { Height(engine, At(30000, 20000), 3000); }), "Negative height")
        << "steep";
}

TEST(Engine, BuildsItsModelWithTheFirstMeasurement) {
    Engine engine;
    engine.SetCalibrationParams(Oblique.ToParams());
    EXPECT_EQ(engine.UnprojectPoint(At(30000, 60000)), (geometry::Point<float, 2>{0, 0}));
    Distance(engine, At(1, 60000), At(2, 60000));
    geometry::Point<float, 2> const before = engine.UnprojectPoint(At(30000, 60000));
    EXPECT_NE(before, (geometry::Point<float, 2>{0, 0}));

    engine.SetCalibrationParams(Params(20, 0, Metres(10), 50));
    EXPECT_EQ(engine.UnprojectPoint(At(30000, 60000)), before) << "the former model stands until a measurement";
    Distance(engine, At(1, 60000), At(2, 60000));
    EXPECT_EQ(engine.UnprojectPoint(At(30000, 60000)), (geometry::Point<float, 2>{2 * before.x, 2 * before.y}));
}

TEST(Engine, RebuildsItsModelForAnotherPictureSize) {
    Engine engine;
    engine.SetCalibrationParams(Oblique.ToParams());
    float const usual = Distance(engine, At(10000, 60000), At(50000, 60000));
    float const square = Distance(engine, At(10000, 60000), At(50000, 60000), {576, 576});
    EXPECT_NEAR(square / usual, 576.0 / 768, 1e-5);
    EXPECT_EQ(Distance(engine, At(10000, 60000), At(50000, 60000), {1536, 1152}), usual) << "the same proportions";
    EXPECT_EQ(Distance(engine, At(10000, 60000), At(50000, 60000)), usual);
}

TEST(Engine, KeepsTheFormerModelForAPictureWithoutArea) {
    Engine engine;
    engine.SetCalibrationParams(Oblique.ToParams());
    EXPECT_EQ(Distance(engine, At(10000, 60000), At(50000, 60000), {0, 0}), 0.0F) << "no model yet";
    EXPECT_TRUE(std::isnan(Height(engine, At(10000, 60000), 3000, {0, 0})));
    float const usual = Distance(engine, At(10000, 60000), At(50000, 60000));
    EXPECT_GT(usual, 0.0F);
    for (Size const size : {Size{0, 576}, Size{576, 0}, Size{0, 0}}) {
        EXPECT_EQ(Distance(engine, At(10000, 60000), At(50000, 60000), size), usual);
    }
    EXPECT_LT(Distance(engine, At(10000, 60000), At(50000, 60000), {576, 576}), usual);
}

TEST(Engine, IsUnchangedByAFailureButForAModelOfTheNewSize) {
    Engine engine;
    Params const params(0, 0, Metres(5), 60);
    engine.SetCalibrationParams(params);
    float const usual = Height(engine, At(30000, 50000), 3000);
    geometry::Point<float, 2> const position = engine.UnprojectPoint(At(30000, 50000));
    for (unsigned int const row : {32768U + 500U, 10000U}) {
        EXPECT_THROW(Height(engine, At(30000, row), 3000), std::runtime_error);
        EXPECT_EQ(engine.GetCalibrationStatus(), 1);
        EXPECT_EQ(engine.GetCalibrationParams(), params);
        EXPECT_EQ(engine.UnprojectPoint(At(30000, 50000)), position);
        EXPECT_EQ(Height(engine, At(30000, 50000), 3000), usual);
    }
    EXPECT_THROW(Height(engine, At(30000, 10000), 3000, {576, 576}), std::runtime_error);
    EXPECT_NEAR(engine.UnprojectPoint(At(30000, 50000)).x / position.x, 576.0 / 768, 1e-5);
}

TEST(Engine, DoesNotBuildAModelForARefusedMeasurement) {
    Engine engine;
    engine.SetCalibrationParams(Params(false, 20, 0, Metres(5), 50));
    EXPECT_THROW(Distance(engine, At(1, 2), At(3, 4)), std::runtime_error);
    EXPECT_EQ(engine.UnprojectPoint(At(30000, 60000)), (geometry::Point<float, 2>{0, 0}));
}

TEST(Engine, ReturnsAHeightThatIsNotANumber) {
    Engine engine;
    engine.SetCalibrationParams(Params(Nan, 0, Metres(5), 50));
    EXPECT_TRUE(std::isnan(Height(engine, At(30000, 60000), 3000)));
    EXPECT_TRUE(std::isnan(Distance(engine, At(30000, 60000), At(1, 1))));
}

}  // namespace
}  // namespace qel::algorithm::calibration
