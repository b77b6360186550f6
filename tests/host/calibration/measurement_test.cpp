#include "calibration/measurement.hpp"

#include <cmath>
#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "host/calibration/scene.hpp"
#include "support/message_of.hpp"

namespace qel::host::calibration {
namespace {

using qel::test::MessageOf;

using namespace test;

constexpr Mounting<double> Camera{22, 3, 5, 50};
constexpr Covariance Errors{
    {{0.09, 0.01, 0.01, 0.02}, {0.01, 0.16, 0, 0.01}, {0.01, 0, 0.01, -0.01}, {0.02, 0.01, -0.01, 0.25}}};

TEST(Measurer, MeasuresByTheEngine) {
    Measurer const measurer({Camera, std::nullopt}, {768, 576});
    algorithm::calibration::Engine engine;
    engine.SetCalibrationParams(ToParams(Camera));
    EXPECT_EQ(measurer.GetDistance({192, 432}, {576, 504}).metres,
              engine.GetDistance({{16384}, {49152}}, {{49152}, {57344}}, {768, 576}).value());
    EXPECT_EQ(measurer.GetHeight({192, 432}, 72).metres,
              engine.GetHeight({{16384}, {49152}}, {8192}, {768, 576}).value());
}

TEST(Measurer, TakesPositionsOutsideThePictureForItsEdge) {
    Measurer const measurer({Camera, std::nullopt}, {768, 576});
    EXPECT_EQ(measurer.GetDistance({-5, 500}, {800, 580}).metres, measurer.GetDistance({0, 500}, {768, 576}).metres);
}

TEST(Measurer, KnowsWhereAPixelLiesOnTheGround) {
    Measurer const measurer({Camera, std::nullopt}, Picture);
    Pixel const pixel = Project(Camera, Picture, 2, 11);
    EXPECT_NEAR(measurer.GetGround(pixel).x, 2, 1e-9);
    EXPECT_NEAR(measurer.GetGround(pixel).y, 11, 1e-9);
    Measurement const distance = measurer.GetDistanceFromCamera(pixel);
    EXPECT_NEAR(distance.metres, std::hypot(2, 11), 1e-9);
    EXPECT_NEAR(distance.error, measurer.GetDistance(Project(Camera, Picture, -2, 0.0001), pixel).error, 0.2);
}

TEST(Measurer, SaysWhyItCannotMeasure) {
    Measurer const measurer({{5, 0, 5, 50}, std::nullopt}, Picture);
    EXPECT_EQ(MessageOf<std::runtime_error>([&] {
                  measurer.GetDistance({600, 100}, {600, 700});
              }),
              "Point is not on the ground");
    EXPECT_EQ(MessageOf<std::runtime_error>([&] {
                  measurer.GetDistance({600, 700}, {600, 100});
              }),
              "Point is not on the ground");
    EXPECT_EQ(MessageOf<std::runtime_error>([&] {
                  measurer.GetDistanceFromCamera({600, 100});
              }),
              "Point is not on the ground");
    EXPECT_EQ(MessageOf<std::runtime_error>([&] {
                  measurer.GetHeight({600, 100}, 50);
              }),
              "Negative height")
        << "the engine's own reason";
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { measurer.GetGround({600, 100}); }), "Point is not on the ground");
    Pixel const far = Project({5, 0, 5, 50}, Picture, 0, 700);
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { measurer.GetHeight(far, 5); }), "Target is too far");
    Measurer const turned({{90, 180, 8, 60}, std::nullopt}, Picture);
    EXPECT_EQ(MessageOf<std::runtime_error>([&] { turned.GetHeight({600, 400}, 50); }), "Negative height");
}

/// Standard deviation of a length over cameras and clicks drawn from their errors.
double Simulate(Random& random, double clickError, bool withCamera,
                std::function<double(Model<double> const&, std::function<Pixel(Pixel)>)> const& measure) {
    // A triangle of numbers whose product with its own transpose is the covariance.
    std::array<std::array<double, 4>, 4> root{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column <= row; ++column) {
            double rest = Errors[row][column];
            for (std::size_t k = 0; k < column; ++k) rest -= root[row][k] * root[column][k];
            root[row][column] = row == column ? std::sqrt(rest) : rest / root[column][column];
        }
    }
    constexpr int Rounds = 20000;
    double sum = 0, squares = 0;
    for (int round = 0; round < Rounds; ++round) {
        auto values = ToArray(Camera);
        std::array<double, 4> draws{};
        for (double& draw : draws) draw = random.Normal(withCamera ? 1 : 0);
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k <= row; ++k) values[row] += 0.2 * root[row][k] * draws[k];
        }
        double const length = measure(Model<double>(ToMounting(values), Picture),
                                      [&](Pixel pixel) { return Click(random, pixel, clickError); });
        sum += length;
        squares += length * length;
    }
    return std::sqrt(squares / Rounds - sum / Rounds * (sum / Rounds));
}

/// Errors, made small enough for first order to be exact to a per cent or two.
Covariance MakeSmall() {
    Covariance small = Errors;
    for (auto& row : small) {
        for (double& element : row) element *= 0.04;
    }
    return small;
}

TEST(Measurer, StatesTheErrorThatManyCamerasAndClicksShow) {
    Pixel const from = Project(Camera, Picture, -1, 9), to = Project(Camera, Picture, 2.5, 12);
    Pixel const top = Project(Camera, Picture, -1, 9, 1.75);
    struct Case {
        char const* name;
        double clickError;
        bool withCamera;
    };
    Random random(3);
    for (Case const& c :
         {Case{"clicks alone", 1, false}, Case{"the camera alone", 1e-6, true}, Case{"both", 2, true}}) {
        SCOPED_TRACE(c.name);
        Calibration const calibration{Camera, c.withCamera ? std::optional(MakeSmall()) : std::nullopt};
        Measurer const measurer(calibration, Picture, c.clickError);
        double const distance = Simulate(random, c.clickError, c.withCamera, [&](auto const& model, auto const& click) {
            return model.GetDistance(model.Unproject(click(from)), model.Unproject(click(to)));
        });
        EXPECT_NEAR(measurer.GetDistance(from, to).error / distance, 1, 0.03);
        double const height = Simulate(random, c.clickError, c.withCamera, [&](auto const& model, auto const& click) {
            return model.GetObliqueHeight(model.Unproject(click(from)), click(top).y);
        });
        EXPECT_NEAR(measurer.GetHeight(from, from.y - top.y).error / height, 1, 0.03);
    }
}

TEST(Measurer, StatesTheErrorOfHeightsInSteepViewsAndOfPointsThatCoincide) {
    Measurer const measurer({{90, 0, 8, 60}, std::nullopt}, Picture, 2);
    // A pixel is 8 m * tan(30 degrees) / 360 on the ground, everywhere.
    double const pixel = 8 * std::tan(30 * std::numbers::pi / 180) / 360;
    // The foot's column moves both ends alike; its row and the top's each change the extent.
    EXPECT_NEAR(measurer.GetHeight({640, 360}, 100).error, 2 * pixel * std::sqrt(2), 1e-3 * pixel);
    EXPECT_NEAR(measurer.GetDistance({640, 360}, {640, 360}).error, 2 * pixel * std::sqrt(2), 1e-6);
    EXPECT_EQ(measurer.GetDistance({640, 360}, {640, 360}).metres, 0);
}

TEST(Measurement, SpansTheIntervalOf95Percent) { EXPECT_NEAR((Measurement{3, 0.5}.GetPlusMinus()), 0.98, 1e-4); }

}  // namespace
}  // namespace qel::host::calibration
