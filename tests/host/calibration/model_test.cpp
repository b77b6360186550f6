#include "calibration/model.hpp"

#include <cmath>

#include <gtest/gtest.h>

#include "calibration/calibration.hpp"
#include "host/calibration/scene.hpp"
#include "qel/algorithm/calibration/engine.hpp"

namespace qel::host::calibration {
namespace {

using namespace test;
using algorithm::calibration::Engine;

/// A normalised position, and the pixel position that is exactly the same place.
struct Place {
    Engine::Point normalised;
    Pixel pixel;
};

Place MakePlace(Random& random, Size size) {
    auto const x = static_cast<unsigned short>(random.Uniform(0, 65536));
    auto const y = static_cast<unsigned short>(random.Uniform(0, 65536));
    return {{{x}, {y}}, {x * 0x1p-16 * size.width, y * 0x1p-16 * size.height}};
}

/// What single precision may round away at a distance of so many camera heights, as a share of the camera's height.
double GetTolerance(double reach) { return 2e-6 * (1 + reach) * (1 + reach) * (1 + reach); }

/// Values that single precision holds exactly, so that both models are given the same camera.
Mounting<double> MakeExact(Mounting<double> const& camera) {
    auto const round = [](double value) { return std::round(value * 64) / 64; };
    return {round(camera.tilt), round(camera.roll), round(camera.height), round(camera.verticalFov)};
}

TEST(CalibrationModel, EqualsTheEngineWithinSinglePrecision) {
    Random random(1);
    int compared = 0;
    for (int round = 0; round < 2000; ++round) {
        Mounting<double> camera = MakeExact(MakeCamera(random));
        if (round % 3 == 0) camera.tilt = std::round(random.Uniform(60, 95));
        Size const size = round % 2 == 0 ? Size{768, 576} : Size{1080, 1920};
        Engine engine;
        engine.SetCalibrationParams(ToParams(camera));
        Model<double> const model(camera, size);
        Place const a = MakePlace(random, size), b = MakePlace(random, size);
        auto const from = model.Unproject(a.pixel), to = model.Unproject(b.pixel);
        double const reach = std::max(std::hypot(from.x, from.y), std::hypot(to.x, to.y)) / camera.height;
        if (from.scale <= 0 || to.scale <= 0 || reach > 30) continue;
        double const tolerance = GetTolerance(reach) * camera.height;
        EXPECT_NEAR(engine.GetDistance(a.normalised, b.normalised, size).value(), model.GetDistance(from, to),
                    tolerance);
        EXPECT_NEAR(engine.UnprojectPoint(a.normalised).x, from.x, tolerance);
        EXPECT_NEAR(engine.UnprojectPoint(a.normalised).y, from.y, tolerance);

        auto const extent = static_cast<unsigned short>(a.normalised.y.value / 4);
        double const pixels = extent * 0x1p-16 * size.height;
        bool const isOblique = engine.GetCalibrationStatus() == 1;
        double const height =
            isOblique ? model.GetObliqueHeight(from, a.pixel.y - pixels) : model.GetSteepHeight(a.pixel, pixels);
        if (height < 0.01 || std::abs(height) > 10 * camera.height) continue;
        if (!isOblique && a.normalised.x.value + extent > 65535) continue;
        EXPECT_NEAR(engine.GetHeight(a.normalised, {extent}, size).value(), height, 10 * tolerance);
        ++compared;
    }
    EXPECT_GT(compared, 1000);
}

TEST(CalibrationModel, EndsASidewaysExtentAtThePicturesEdgeLikeTheEngine) {
    Mounting<double> const camera{90, 0, 8, 60};
    Engine engine;
    engine.SetCalibrationParams(ToParams(camera));
    double const height = Model<double>(camera, {768, 576}).GetSteepHeight({768 * 0.75, 288}, 400);
    EXPECT_NEAR(engine.GetHeight({{49152}, {32768}}, {45511}, {768, 576}).value(), height, 1e-3);
}

TEST(CalibrationModel, SeesWhatLiesAheadAndNothingAboveTheHorizon) {
    Model<double> const model({20, 0, 5, 50}, Picture);
    double const horizon = 360 - 360 / std::tan(25 * 3.14159265358979 / 180) * std::tan(20 * 3.14159265358979 / 180);
    EXPECT_GT(model.Unproject({640, horizon + 0.01}).scale, 0);
    EXPECT_LT(model.Unproject({640, horizon - 0.01}).scale, 0);
    EXPECT_GT(model.Unproject({640, horizon + 0.01}).y, 10000);
}

TEST(CalibrationModel, ProjectsBackToWhereItCameFrom) {
    Random random(2);
    for (int round = 0; round < 500; ++round) {
        Mounting<double> const camera = MakeCamera(random);
        Model<double> const model(camera, Picture);
        Pixel const pixel{random.Uniform(0, 1280), random.Uniform(300, 720)};
        auto const ground = model.Unproject(pixel);
        if (ground.scale <= 0) continue;
        Pixel const back = model.Project(ground.x, ground.y);
        EXPECT_NEAR(back.x, pixel.x, 1e-6);
        EXPECT_NEAR(back.y, pixel.y, 1e-6);
        Pixel const drawn = Project(camera, Picture, ground.x, ground.y);
        EXPECT_NEAR(drawn.x, pixel.x, 1e-6);
        EXPECT_NEAR(drawn.y, pixel.y, 1e-6);
    }
}

}  // namespace
}  // namespace qel::host::calibration
