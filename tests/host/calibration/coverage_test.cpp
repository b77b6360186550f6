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
    int scenes, grounds, verticals;
    double clickError;
    /// Of the share of lengths within their intervals; wider where fewer scenes leave more to chance.
    double low, high;
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

TEST_P(Coverage, OfTheStated95PercentIntervalsIs95Percent) {
    Case const& c = GetParam();
    Random random(7);
    Share lengths, parameters;
    int refused = 0;
    for (int scene = 0; scene < c.scenes; ++scene) {
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
    EXPECT_LE(refused, c.scenes / 50);
    EXPECT_GE(lengths.Get(), c.low);
    EXPECT_LE(lengths.Get(), c.high);
    EXPECT_GE(parameters.Get(), c.low);
    EXPECT_LE(parameters.Get(), c.high);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, Coverage,
    testing::Values(Case{"usual", QEL_SCENES, 8, 4, 1, QEL_SCENES < 500 ? 0.9 : 0.93, QEL_SCENES < 500 ? 0.99 : 0.97},
                    Case{"few", QEL_SCENES / 5, 5, 2, 1, 0.88, 1}, Case{"careless", QEL_SCENES / 5, 8, 4, 3, 0.88, 1}),
    [](auto const& instance) { return instance.param.name; });

}  // namespace
}  // namespace qel::host::calibration
