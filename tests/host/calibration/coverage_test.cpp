// How often the stated intervals hold the truth, on scenes whose marks are off by the stated click error.
#include <cmath>

#include <gtest/gtest.h>

#include "calibration/measurement.hpp"
#include "host/calibration/scene.hpp"

namespace qel::host::calibration {
namespace {

using namespace test;

struct Case {
    char const* name;
    int grounds, verticals;
    double clickError;
};

/// Counts how often an error stays within its interval.
struct Share {
    int inside = 0, all = 0;

    void Add(double off, double plusMinus) {
        inside += std::abs(off) <= plusMinus;
        ++all;
    }
    double Get() const { return double(inside) / all; }
};

void Compare(Random& random, Mounting<double> const& camera, Measurer const& measurer, double clickError,
             Share& share) {
    constexpr int Measurements = 10;
    for (int i = 0; i < Measurements; ++i) {
        double const reach = 6 * camera.height;
        Truth const truth = i % 2 == 0 ? MakeGround(random, camera, reach) : MakeVertical(random, camera, reach);
        Reference const mark = Mark(random, truth, clickError);
        Measurement const measurement = truth.kind == Reference::Kind::Ground
                                            ? measurer.GetDistance(mark.from, mark.to)
                                            : measurer.GetHeight(mark.from, mark.from.y - mark.to.y);
        share.Add(measurement.metres - truth.metres, measurement.GetPlusMinus());
    }
}

class Coverage : public testing::TestWithParam<Case> {};

TEST_P(Coverage, OfTheStated95PercentIntervalsIs93To97Percent) {
    constexpr int Scenes = 500;
    Case const& c = GetParam();
    Random random(7);
    Share lengths, parameters;
    int refused = 0;
    for (int scene = 0; scene < Scenes; ++scene) {
        Mounting<double> const camera = MakeCamera(random);
        Problem const problem = MakeProblem(random, camera, c.grounds, c.verticals, c.clickError);
        try {
            Solution const solution = Solve(problem);
            for (std::size_t p = 0; p < ParameterCount; ++p) {
                double const off = ToArray(solution.calibration.mounting)[p] - ToArray(camera)[p];
                parameters.Add(off, 1.96 * solution.standardErrors[p]);
            }
            Compare(random, camera, Measurer(solution.calibration, Picture, c.clickError), c.clickError, lengths);
        } catch (Undetermined const&) {
            ++refused;
        }
    }
    RecordProperty("lengths", std::to_string(lengths.Get()));
    RecordProperty("parameters", std::to_string(parameters.Get()));
    EXPECT_LE(refused, Scenes / 50);
    EXPECT_GE(lengths.Get(), 0.93);
    EXPECT_LE(lengths.Get(), 0.97);
    EXPECT_GE(parameters.Get(), 0.92);
    EXPECT_LE(parameters.Get(), 0.98);
}

INSTANTIATE_TEST_SUITE_P(Scenes, Coverage,
                         testing::Values(Case{"usual", 8, 4, 1}, Case{"few", 5, 2, 1}, Case{"careless", 8, 4, 3}),
                         [](auto const& instance) { return instance.param.name; });

}  // namespace
}  // namespace qel::host::calibration
