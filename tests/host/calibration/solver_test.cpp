#include "calibration/solver.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/calibration/scene.hpp"
#include "support/message_of.hpp"

namespace qel::host::calibration {
namespace {

using namespace test;
using testing::HasSubstr;
using Kind = Finding::Kind;

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr Mounting<double> Camera{24, 2, 5, 48};

Reference Ground(double x0, double y0, double x1, double y1) {
    return {Reference::Kind::Ground, Project(Camera, Picture, x0, y0), Project(Camera, Picture, x1, y1),
            std::hypot(x1 - x0, y1 - y0)};
}

Reference Upright(double x, double y, double metres) {
    return {Reference::Kind::Vertical, Project(Camera, Picture, x, y), Project(Camera, Picture, x, y, metres), metres};
}

/// Segments in all directions and three people, exact.
Problem MakeExact() {
    return {
        Picture,
        {Ground(-2, 8, 2, 8.5), Ground(-2, 8, -3, 14), Ground(2, 8.5, 3, 13), Ground(-3, 14, 3, 13),
         Ground(-1, 9, 2, 12), Ground(1, 8, -2, 12), Upright(-1, 9, 1.8), Upright(1.5, 11, 1.65), Upright(-2, 15, 1.9)},
        {},
        1};
}

void ExpectCamera(Mounting<double> const& found, double tolerance) {
    EXPECT_NEAR(found.tilt, Camera.tilt, tolerance);
    EXPECT_NEAR(found.roll, Camera.roll, tolerance);
    EXPECT_NEAR(found.height, Camera.height, tolerance);
    EXPECT_NEAR(found.verticalFov, Camera.verticalFov, tolerance);
}

std::vector<Kind> GetKinds(std::vector<Finding> const& findings) {
    std::vector<Kind> kinds;
    for (Finding const& finding : findings) kinds.push_back(finding.kind);
    return kinds;
}

/// The reasons for which no answer is given.
std::vector<Finding> GetReasons(Problem const& problem) {
    try {
        Solve(problem);
    } catch (Undetermined const& error) {
        return error.GetReasons();
    }
    return {};
}

TEST(Solver, FindsTheCameraThatExactReferencesWereSeenBy) {
    Solution const solution = Solve(MakeExact());
    ExpectCamera(solution.calibration.mounting, 1e-5);
    EXPECT_TRUE(solution.warnings.empty());
    EXPECT_EQ(solution.enlargement, 1);
    ASSERT_EQ(solution.residuals.size(), 9U);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(solution.residuals[i].measured.value(), MakeExact().references[i].metres, 1e-6);
        EXPECT_NEAR(solution.residuals[i].leaveOneOut.value(), 0, 1e-5);
        EXPECT_GT(solution.residuals[i].leaveOneOutError.value(), 0);
        EXPECT_FALSE(solution.residuals[i].looksWrong);
    }
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        EXPECT_GT(solution.standardErrors[p], 0);
        EXPECT_EQ(std::sqrt((*solution.calibration.covariance)[p][p]), solution.standardErrors[p]);
    }
}

TEST(Solver, FindsManyDifferentCameras) {
    Random random(11);
    for (int round = 0; round < 60; ++round) {
        Mounting<double> const camera{random.Uniform(8, 55), random.Uniform(-25, 25), random.Uniform(4, 30),
                                      random.Uniform(25, 90)};
        Problem const problem = MakeProblem(random, camera, 8, 4, 1e-3);
        Solution const solution = Solve(problem);
        EXPECT_NEAR(solution.calibration.mounting.tilt, camera.tilt, 0.02);
        EXPECT_NEAR(solution.calibration.mounting.roll, camera.roll, 0.02);
        EXPECT_NEAR(solution.calibration.mounting.height / camera.height, 1, 2e-3);
        EXPECT_NEAR(solution.calibration.mounting.verticalFov, camera.verticalFov, 0.05);
    }
}

TEST(Solver, HoldsParametersFixed) {
    Problem problem = MakeExact();
    for (Reference& reference : problem.references) reference.from.x += 3;
    problem.fixed = {std::nullopt, 1.5, std::nullopt, 50};
    Solution const solution = Solve(problem);
    EXPECT_EQ(solution.calibration.mounting.roll, 1.5);
    EXPECT_EQ(solution.calibration.mounting.verticalFov, 50);
    EXPECT_EQ(solution.standardErrors[1], 0);
    EXPECT_EQ(solution.standardErrors[3], 0);
    EXPECT_GT(solution.standardErrors[0], 0);
    EXPECT_GT(solution.standardErrors[2], 0);
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        EXPECT_EQ((*solution.calibration.covariance)[1][p], 0);
        EXPECT_EQ((*solution.calibration.covariance)[p][3], 0);
    }
}

TEST(Solver, ChecksReferencesAgainstACameraThatIsWhollyKnown) {
    Problem problem = MakeExact();
    problem.fixed = {Camera.tilt, Camera.roll, Camera.height, Camera.verticalFov};
    problem.references[4].metres += 1;
    Solution const solution = Solve(problem);
    ExpectCamera(solution.calibration.mounting, 0);
    EXPECT_EQ(solution.standardErrors, (std::array<double, 4>{}));
    EXPECT_NEAR(solution.residuals[4].leaveOneOut.value(), -1, 1e-9);
    EXPECT_EQ(GetKinds(solution.warnings), std::vector{Kind::LooksWrong});
}

TEST(Solver, NamesWrongReferencesAndIsNotLedAstray) {
    Random random(12);
    Problem problem = MakeExact();
    for (Reference& reference : problem.references) {
        reference.from = Click(random, reference.from, 1);
        reference.to = Click(random, reference.to, 1);
    }
    Solution const before = Solve(problem);
    problem.references[2].metres *= 1.5;
    problem.references[7].metres = 2.6;
    problem.references[7].name = "the door";
    Solution const solution = Solve(problem);
    EXPECT_NEAR(solution.calibration.mounting.tilt, before.calibration.mounting.tilt, 2 * before.standardErrors[0]);
    EXPECT_NEAR(solution.calibration.mounting.height, before.calibration.mounting.height, 2 * before.standardErrors[2]);
    std::vector<Finding> wrong;
    std::copy_if(solution.warnings.begin(), solution.warnings.end(), std::back_inserter(wrong),
                 [](Finding const& finding) { return finding.kind == Kind::LooksWrong; });
    ASSERT_EQ(wrong.size(), 2U);
    EXPECT_THAT(wrong[0].text, HasSubstr("ground segment 3 looks wrong: the others make it 4."));
    EXPECT_THAT(wrong[0].text, HasSubstr(" m instead of 6.9"));
    EXPECT_THAT(wrong[1].text, HasSubstr("\"the door\" looks wrong: the others make it 1."));
    EXPECT_TRUE(solution.residuals[2].looksWrong);
    EXPECT_TRUE(solution.residuals[7].looksWrong);
    EXPECT_FALSE(solution.residuals[0].looksWrong);
}

TEST(Solver, NamesAReferenceThatTheOthersSeeAboveTheHorizon) {
    Problem problem = MakeExact();
    problem.references.push_back({Reference::Kind::Ground, {400, 3}, {900, 5}, 5, 0, "roof"});
    Solution const solution = Solve(problem);
    ExpectCamera(solution.calibration.mounting, 1e-3);
    EXPECT_FALSE(solution.residuals.back().measured);
    ASSERT_EQ(GetKinds(solution.warnings), std::vector{Kind::LooksWrong});
    EXPECT_EQ(solution.warnings[0].text, "\"roof\" looks wrong: the others see it above the horizon");
}

TEST(Solver, TrustsAReferenceByItsTolerance) {
    Problem problem = MakeExact();
    problem.references[6].metres = 1.95;
    problem.references[6].tolerance = 0.2;
    Solution const solution = Solve(problem);
    EXPECT_FALSE(solution.residuals[6].looksWrong);
    EXPECT_NEAR(solution.residuals[6].leaveOneOut.value(), -0.15, 1e-3);
    EXPECT_GT(solution.residuals[6].leaveOneOutError.value(), 0.2);
    ExpectCamera(solution.calibration.mounting, 0.05);
}

TEST(Solver, StatesSmallerErrorsForBetterMarksAndForMoreOfThem) {
    Problem problem = MakeExact();
    Solution const usual = Solve(problem);
    problem.clickError = 0.5;
    Solution const careful = Solve(problem);
    Problem twice = MakeExact();
    twice.references.insert(twice.references.end(), problem.references.begin(), problem.references.end());
    Solution const more = Solve(twice);
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        EXPECT_NEAR(careful.standardErrors[p] / usual.standardErrors[p], 0.5, 1e-3);
        EXPECT_NEAR(more.standardErrors[p] / usual.standardErrors[p], std::sqrt(0.5), 1e-3);
    }
}

TEST(Solver, EnlargesItsErrorsWhenTheReferencesDisagree) {
    Random random(13);
    Problem problem = MakeProblem(random, Camera, 20, 10, 4);
    problem.clickError = 1;
    Solution const solution = Solve(problem);
    EXPECT_GT(solution.enlargement, 3);
    EXPECT_LT(solution.enlargement, 5.5);
    auto const kinds = GetKinds(solution.warnings);
    ASSERT_NE(std::find(kinds.begin(), kinds.end(), Kind::Disagreement), kinds.end());
}

TEST(Solver, RefusesTooFewReferences) {
    Problem problem = MakeExact();
    problem.references.resize(3);
    EXPECT_EQ(qel::test::MessageOf<Error>([&] { Solve(problem); }),
              "too few references: 4 parameters are free (tilt, roll, height_m, vertical_fov) and 3 references are "
              "given: add references, or hold parameters fixed");
    EXPECT_EQ(GetKinds(GetReasons(problem)), std::vector{Kind::TooFew});
    problem.fixed = {std::nullopt, 0, std::nullopt, 48};
    problem.references.resize(1);
    EXPECT_EQ(qel::test::MessageOf<Error>([&] { Solve(problem); }),
              "too few references: 2 parameters are free (tilt, height_m) and 1 reference is given: add references, or "
              "hold parameters fixed");
    problem.references.clear();
    EXPECT_EQ(GetKinds(GetReasons(problem)), std::vector{Kind::TooFew});
}

TEST(Solver, SaysThatNothingChecksReferencesWithoutASpareOne) {
    Problem problem = MakeExact();
    problem.fixed = {std::nullopt, Camera.roll, std::nullopt, Camera.verticalFov};
    problem.references.resize(2);
    Solution const solution = Solve(problem);
    ExpectCamera(solution.calibration.mounting, 1e-4);
    EXPECT_EQ(GetKinds(solution.warnings), std::vector{Kind::NothingSpare});
    EXPECT_FALSE(solution.residuals[0].leaveOneOut);
    EXPECT_FALSE(solution.residuals[0].looksWrong);
}

TEST(Solver, RefusesHeightsAloneByName) {
    Problem problem = MakeExact();
    problem.references = {Upright(-1, 9, 1.8), Upright(1.5, 10, 1.65), Upright(0, 11, 1.9), Upright(-1.5, 10, 1.7),
                          Upright(1, 9, 1.75)};
    auto const reasons = GetReasons(problem);
    ASSERT_EQ(GetKinds(reasons), (std::vector{Kind::HeightsAlone, Kind::Undetermined}));
    EXPECT_EQ(reasons[0].text,
              "heights alone do not tell the tilt from the field of view: mark lengths on the ground as well, or hold "
              "one of the two fixed");
    EXPECT_THAT(reasons[1].text, HasSubstr("vertical_fov (+/- "));
    problem.fixed[3] = Camera.verticalFov;
    ExpectCamera(Solve(problem).calibration.mounting, 1e-3);
}

TEST(Solver, RefusesNearlyParallelSegmentsByName) {
    Problem problem = MakeExact();
    problem.references = {Ground(-2, 9, 2, 9), Ground(-2, 10, 2, 10.1), Ground(-1, 11, 2, 11), Ground(-2, 9.5, 1, 9.4),
                          Ground(-2, 10.5, 2, 10.6)};
    auto const reasons = GetReasons(problem);
    ASSERT_EQ(GetKinds(reasons), (std::vector{Kind::NearlyParallel, Kind::Undetermined}));
    EXPECT_THAT(reasons[0].text, HasSubstr("all segments on the ground are nearly parallel (within "));
}

TEST(Solver, RefusesReferencesThatLieInOneSpotByTheParametersTheyLeaveOpen) {
    Problem problem = MakeExact();
    problem.references = {Ground(0, 10, 0.3, 10), Ground(0, 10, 0, 10.3), Ground(0.3, 10, 0, 10.3),
                          Ground(0, 10, 0.3, 10.3), Ground(0.3, 10, 0.3, 10.3)};
    EXPECT_EQ(GetKinds(GetReasons(problem)), std::vector{Kind::Undetermined});
}

TEST(Solver, WarnsOfWeaklyDeterminedParameters) {
    Problem problem = MakeExact();
    problem.clickError = 6;
    Solution const solution = Solve(problem);
    ASSERT_EQ(GetKinds(solution.warnings), std::vector{Kind::Undetermined});
    EXPECT_THAT(solution.warnings[0].text, HasSubstr("the references leave "));
    EXPECT_THAT(solution.warnings[0].text, HasSubstr("(+/- "));
}

TEST(Solver, SaysThatHeightsAreMeasuredSidewaysInSteepViews) {
    constexpr Mounting<double> Steep{75, 2, 8, 60};
    Random random(14);
    Solution const solution = Solve(MakeProblem(random, Steep, 10, 0, 0.1));
    EXPECT_NEAR(solution.calibration.mounting.tilt, 75, 1);
    auto const kinds = GetKinds(solution.warnings);
    EXPECT_NE(std::find(kinds.begin(), kinds.end(), Kind::SteepView), kinds.end());
}

TEST(Solver, SurvivesMarksWithoutSense) {
    Random random(16);
    int answers = 0;
    testing::internal::CaptureStderr();
    for (int round = 0; round < 150; ++round) {
        Problem problem{Picture, {}, {}, random.Uniform(0.1, 5)};
        auto const anywhere = [&] { return Pixel{random.Uniform(0, 1280), random.Uniform(0, 720)}; };
        for (int i = 0; i < 4 + round % 7; ++i) {
            Reference reference{Reference::Kind::Ground, anywhere(), anywhere(), random.Uniform(0.01, 50)};
            bool const isUpright = reference.to.y < reference.from.y && i % 3 == 0;
            if (isUpright) reference.kind = Reference::Kind::Vertical;
            problem.references.push_back(reference);
        }
        try {
            Solution const solution = Solve(problem);
            for (double const value : ToArray(solution.calibration.mounting)) EXPECT_TRUE(std::isfinite(value));
            for (double const error : solution.standardErrors) EXPECT_TRUE(std::isfinite(error));
            ++answers;
        } catch (Undetermined const& error) {
            EXPECT_FALSE(error.GetReasons().empty());
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the solver is silent";
    EXPECT_LT(answers, 150);
}

TEST(Solver, RefusesProblemsThatMakeNoSense) {
    struct Case {
        std::function<void(Problem&)> spoil;
        char const* error;
    };
    Case const cases[] = {
        {[](Problem& p) { p.size.width = 0; }, "the picture: its size must be positive"},
        {[](Problem& p) { p.size.height = -1; }, "the picture: its size must be positive"},
        {[](Problem& p) { p.clickError = 0; }, "the click error: it must be more than 0 pixels, not 0"},
        {[](Problem& p) { p.clickError = Nan; }, "the click error: it must be more than 0 pixels, not nan"},
        {[](Problem& p) { p.references[0].metres = 0; }, "ground segment 1: its length must be more than 0 m, not 0"},
        {[](Problem& p) { p.references[7].metres = -2; },
         "vertical segment 2: its length must be more than 0 m, not -2"},
        {[](Problem& p) { p.references[1].metres = Nan; },
         "ground segment 2: its length must be more than 0 m, not nan"},
        {[](Problem& p) { p.references[1].metres = 1 / 0.0; },
         "ground segment 2: its length must be more than 0 m, not inf"},
        {[](Problem& p) { p.references[1].tolerance = -1; },
         "ground segment 2: its tolerance must be 0 m or more, not -1"},
        {[](Problem& p) { p.references[1].from.x = Nan; }, "ground segment 2: it lies outside the picture"},
        {[](Problem& p) { p.references[1].to.y = 1441; }, "ground segment 2: it lies outside the picture"},
        {[](Problem& p) { p.references[1].to = p.references[1].from; },
         "ground segment 2: its ends must be a pixel apart at least"},
        {[](Problem& p) { std::swap(p.references[6].from, p.references[6].to); },
         "vertical segment 1: its top must be above its foot in the picture"},
        {[](Problem& p) { p.fixed[0] = 181; }, "tilt: it must be -90 to 180 degrees, not 181"},
        {[](Problem& p) { p.fixed[2] = 0; }, "height_m: it must be 0.01 to 10000 m, not 0"},
        {[](Problem& p) { p.fixed[3] = Nan; }, "vertical_fov: it must be 0.1 to 179.9 degrees, not nan"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.error);
        Problem problem = MakeExact();
        c.spoil(problem);
        EXPECT_EQ(qel::test::MessageOf<Error>([&] { Solve(problem); }), c.error);
        EXPECT_THROW(Solve(problem), UsageError);
    }
}

}  // namespace
}  // namespace qel::host::calibration
