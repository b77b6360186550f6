#include "calibration/diagnosis.hpp"

#include <array>
#include <cmath>
#include <numbers>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/calibration/scene.hpp"

namespace qel::host::calibration {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Kind = Finding::Kind;

constexpr Mounting<double> Camera{24, 2, 5, 48};

/// A segment of 2 m on the ground in a direction, in degrees.
Reference Ground(double direction) {
    double const x = std::cos(direction * std::numbers::pi / 180), y = std::sin(direction * std::numbers::pi / 180);
    return {Reference::Kind::Ground, Project(Camera, Picture, -x, 12 - y), Project(Camera, Picture, x, 12 + y), 2};
}

Reference Upright() {
    return {Reference::Kind::Vertical, Project(Camera, Picture, 1, 9), Project(Camera, Picture, 1, 9, 1.8), 1.8};
}

/// Segments across one another and a person: nothing to complain of.
Problem MakeSound() { return {Picture, {Ground(0), Ground(90), Ground(45), Upright(), Upright()}, {}, 1}; }

/// An estimate that counts each reference in full and has these standard errors.
Estimate WithErrors(Problem const& problem, std::array<double, ParameterCount> const& errors) {
    Estimate estimate;
    estimate.covariance.emplace();
    for (std::size_t p = 0; p < ParameterCount; ++p) (*estimate.covariance)[p][p] = errors[p] * errors[p];
    estimate.weights.assign(problem.references.size(), 1);
    return estimate;
}

std::vector<std::string> Texts(std::vector<Finding> const& findings) {
    std::vector<std::string> texts;
    for (Finding const& finding : findings) texts.push_back(finding.text);
    return texts;
}

TEST(FindWeaknesses, HoldsStandardErrorsAgainstDegreesAndASharesOfTheHeight) {
    struct Case {
        std::array<double, ParameterCount> errors;
        char const* weak;
        char const* hopeless;
    };
    Case const cases[] = {
        {{1.49, 1.49, 0.49, 2.99}, "", ""},
        {{1.51, 0, 0, 0}, "tilt (+/- 1.5 degrees)", ""},
        {{0, 1.51, 0, 0}, "roll (+/- 1.5 degrees)", ""},
        {{0, 0, 0.51, 0}, "height_m (+/- 0.51 m)", ""},
        {{0, 0, 0, 3.01}, "vertical_fov (+/- 3 degrees)", ""},
        {{4.9, 0, 1.4, 9.9}, "tilt (+/- 4.9 degrees), height_m (+/- 1.4 m), vertical_fov (+/- 9.9 degrees)", ""},
        {{5.1, 2, 0, 0}, "", "tilt (+/- 5.1 degrees)"},
        {{0, 5.1, 0, 0}, "", "roll (+/- 5.1 degrees)"},
        {{0, 0, 1.6, 0}, "", "height_m (+/- 1.6 m)"},
        {{0, 0, 0, 10.1}, "", "vertical_fov (+/- 10 degrees)"},
    };
    Problem const problem = MakeSound();
    auto const open = [](char const* names) {
        return "the references leave " + std::string(names) +
               " open: add references elsewhere in the picture and in other directions, or hold a parameter fixed";
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(std::string(c.weak) + c.hopeless);
        auto const determination = FindWeaknesses(problem, Camera, WithErrors(problem, c.errors));
        using Expected = std::vector<std::string>;
        EXPECT_EQ(Texts(determination.warnings), *c.weak == '\0' ? Expected{} : Expected{open(c.weak)});
        EXPECT_EQ(Texts(determination.refusals), *c.hopeless == '\0' ? Expected{} : Expected{open(c.hopeless)});
    }
}

TEST(FindWeaknesses, NamesEveryFreeParameterWhereNothingIsKnownOfTheErrors) {
    Problem problem = MakeSound();
    problem.fixed[1] = 0;
    Estimate estimate = WithErrors(problem, {});
    estimate.covariance.reset();
    EXPECT_THAT(Texts(FindWeaknesses(problem, Camera, estimate).refusals),
                ElementsAre(HasSubstr("leave tilt, height_m, vertical_fov open")));
}

TEST(FindWeaknesses, BlamesSegmentsThatAreNearlyParallelAndSaysHowNearly) {
    struct Case {
        std::vector<double> directions;
        char const* within;  // empty: not parallel
    };
    Case const cases[] = {
        {{30, 33.9}, "4 degrees"},      {{30, 210, 31.2}, "2 degrees"},
        {{0, 179.2, 0.8}, "2 degrees"}, {{89.1, -89.1}, "2 degrees"},
        {{10, 31.9}, "22 degrees"},     {{10, 36}, ""},
        {{0, 1, 2, 3, 90}, ""},         {{45}, ""},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.directions));
        Problem problem{Picture, {Upright(), Upright(), Upright()}, {}, 1};
        for (double const direction : c.directions) problem.references.push_back(Ground(direction));
        auto const causes = FindWeaknesses(problem, Camera, WithErrors(problem, {9, 0, 0, 0})).refusals;
        if (*c.within == '\0') {
            EXPECT_EQ(causes.size(), 1U);
            continue;
        }
        ASSERT_EQ(causes.size(), 2U);
        EXPECT_EQ(causes[0].kind, Kind::NearlyParallel);
        EXPECT_THAT(causes[0].text, HasSubstr("nearly parallel (within " + std::string(c.within)));
    }
}

TEST(FindWeaknesses, CountsNoSegmentThatTheFitLeftOut) {
    Problem problem{Picture, {Ground(0), Ground(90), Ground(3), Upright()}, {}, 1};
    Estimate estimate = WithErrors(problem, {2, 0, 0, 0});
    EXPECT_EQ(FindWeaknesses(problem, Camera, estimate).warnings.front().kind, Kind::Undetermined);
    estimate.weights[1] = 0;
    EXPECT_EQ(FindWeaknesses(problem, Camera, estimate).warnings.front().kind, Kind::NearlyParallel);
}

TEST(FindWeaknesses, KeepsCausesToItselfWhileTheErrorsAreSmall) {
    Problem const problem{Picture, {Ground(0), Ground(1), Ground(2), Ground(3), Ground(4)}, {}, 1};
    auto const determination = FindWeaknesses(problem, Camera, WithErrors(problem, {0.1, 0.1, 0.1, 0.1}));
    EXPECT_THAT(determination.refusals, IsEmpty());
    EXPECT_THAT(determination.warnings, IsEmpty());
}

TEST(FindOddities, NamesFreeParametersAtAnEndOfTheirSearchRange) {
    struct Case {
        Mounting<double> mounting;
        std::size_t parameter;
        char const* text;
    };
    Case const cases[] = {
        {{-20, 0, 5, 50}, 0, "tilt lies at the end of the searched range, -20 to 90 degrees"},
        {{30, -60, 5, 50}, 1, "roll lies at the end of the searched range, -60 to 60 degrees"},
        {{30, 60, 5, 50}, 1, "roll lies at the end of the searched range, -60 to 60 degrees"},
        {{30, 0, 0.2, 50}, 2, "height_m lies at the end of the searched range, 0.2 to 500 m"},
        {{30, 0, 500, 50}, 2, "height_m lies at the end of the searched range, 0.2 to 500 m"},
        {{30, 0, 5, 5}, 3, "vertical_fov lies at the end of the searched range, 5 to 150 degrees"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        Problem problem = MakeSound();
        std::string const advice = ": check the references, or hold it fixed";
        EXPECT_THAT(Texts(FindOddities(problem, c.mounting)), ElementsAre(c.text + advice));
        problem.fixed[c.parameter] = 1;
        EXPECT_THAT(FindOddities(problem, c.mounting), IsEmpty()) << "where it was put";
    }
    EXPECT_THAT(FindOddities(MakeSound(), {-19.99, 59.99, 0.21, 5.01}), IsEmpty());
}

}  // namespace
}  // namespace qel::host::calibration
