// A patient robust fit from the most promising mountings of a coarse grid, a strict one from the best of these, and
// then one more fit for each reference without it.
#include "calibration/solver.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <boost/math/distributions/chi_squared.hpp>

#include "calibration/diagnosis.hpp"
#include "calibration/estimate.hpp"
#include "calibration/fit.hpp"
#include "calibration/problem_check.hpp"
#include "calibration/residual.hpp"
#include "calibration/text.hpp"

namespace qel::host::calibration {
namespace {

using Kind = Finding::Kind;

constexpr std::size_t StartCount = 8;
/// Standard errors from which on a reference looks wrong beside all the others.
constexpr double WrongFrom = 3.5;

std::string Join(std::vector<Finding> const& findings) {
    std::string text;
    for (Finding const& finding : findings) text += (text.empty() ? "" : "\n") + finding.text;
    return text;
}

bool IsElsewhere(Mounting<double> const& a, Mounting<double> const& b) {
    return std::abs(a.tilt - b.tilt) > 2 || std::abs(a.roll - b.roll) > 2 ||
           std::abs(a.verticalFov - b.verticalFov) > 4 || std::abs(std::log(a.height / b.height)) > 0.1;
}

Finding MakeNoAnswer() {
    return {Kind::NoAnswer, "no mounting explains the references: check their positions and lengths"};
}

std::string Describe(Mounting<double> const& mounting) {
    std::string text;
    auto const values = ToArray(mounting);
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        text += (p == 0 ? "" : ", ") + std::string(ParameterNames[p]) + " " + Format(values[p], 4);
    }
    return text;
}

struct Search {
    Fit best;
    /// Of another place that explains the references as well, if there is one.
    std::optional<Mounting<double>> other;
};

Search FindNearlyBest(Problem const& problem) {
    std::vector<Fit> fits;
    for (Mounting<double> const& start : FindStarts(problem, StartCount)) {
        if (auto const fit = FitMounting(problem, start, Robustness::Patient)) fits.push_back(*fit);
    }
    auto const best =
        std::min_element(fits.begin(), fits.end(), [](Fit const& a, Fit const& b) { return a.cost < b.cost; });
    if (best == fits.end()) throw Undetermined({MakeNoAnswer()});
    Search search{*best, std::nullopt};
    for (Fit const& fit : fits) {
        // Twice the difference is a chi-square: four is what a parameter moves by chance at times.
        if (fit.cost - best->cost < 2 && IsElsewhere(fit.mounting, best->mounting)) search.other = fit.mounting;
    }
    return search;
}

/// The problem with the errors of its marks and lengths that many times as large.
Problem Enlarge(Problem problem, double factor) {
    problem.clickError *= factor;
    for (Reference& reference : problem.references) reference.tolerance *= factor;
    return problem;
}

/// Standard deviation of the references from a fit, in standard errors of their marks, whatever the wrong ones among
/// them: from the median. Never less than 1; 1 unless it is so large that it matters to the choice of wrong ones.
double GetSpread(Problem const& problem, Mounting<double> const& mounting) {
    std::vector<double> deviations = MakeEstimate(problem, mounting).deviations;
    for (double& deviation : deviations) deviation = std::abs(deviation);
    auto const count = static_cast<double>(deviations.size());
    double const spare = count - static_cast<double>(CountFree(problem));
    if (spare < 1) return 1;
    auto const middle = deviations.begin() + static_cast<std::ptrdiff_t>(deviations.size() / 2);
    std::nth_element(deviations.begin(), middle, deviations.end());
    double const spread = 1.4826 * *middle * std::sqrt(count / spare);
    return spread > 2 ? spread : 1;
}

/// The factor by which the references disagree beyond what clicks explain; 1 unless that is very unlikely to be chance.
double GetDisagreement(Estimate const& estimate) {
    if (estimate.spare < 1) return 1;
    boost::math::chi_squared const distribution(estimate.spare);
    double const limit = quantile(complement(distribution, 0.001));
    return estimate.squares > limit ? std::sqrt(estimate.squares / estimate.spare) : 1;
}

/// A strict fit, and the problem with errors as large as the references show them to be.
struct Answer {
    Problem problem;
    Mounting<double> mounting;
    double enlargement;
};

Answer FindAnswer(Problem const& problem, Mounting<double> const& start) {
    Answer answer{problem, start, GetSpread(problem, start)};
    constexpr int Rounds = 5;
    for (int round = 0; round < Rounds; ++round) {
        answer.problem = Enlarge(problem, answer.enlargement);
        auto const fit = FitMounting(answer.problem, answer.mounting, Robustness::Strict);
        if (!fit) throw Undetermined({MakeNoAnswer()});
        answer.mounting = fit->mounting;
        double const factor = GetDisagreement(MakeEstimate(answer.problem, answer.mounting));
        if (factor == 1) break;
        answer.enlargement *= factor;
    }
    return answer;
}

/// Variance that the parameters' errors give a length.
double Propagate(Covariance const& covariance, std::array<double, ParameterCount> const& derivatives) {
    double variance = 0;
    for (std::size_t row = 0; row < ParameterCount; ++row) {
        for (std::size_t column = 0; column < ParameterCount; ++column) {
            variance += derivatives[row] * covariance[row][column] * derivatives[column];
        }
    }
    return variance;
}

Residual MakeResidual(Problem const& problem, Mounting<double> const& mounting, std::size_t index) {
    Residual residual;
    Reference const& reference = problem.references[index];
    if (auto const all = Measure(mounting, problem.size, reference, problem.clickError))
        residual.measured = all->length;
    residual.looksWrong = !residual.measured;
    if (problem.references.size() <= CountFree(problem)) return residual;
    auto const fit = FitMounting(problem, mounting, Robustness::Strict, index);
    if (!fit) return residual;
    Estimate const estimate = MakeEstimate(problem, fit->mounting, index);
    auto const others = Measure(fit->mounting, problem.size, reference, problem.clickError);
    if (!others || !estimate.covariance) return residual;
    residual.leaveOneOut = others->length - reference.metres;
    residual.leaveOneOutError =
        std::sqrt(others->error * others->error + Propagate(*estimate.covariance, others->byParameter));
    residual.looksWrong = std::abs(*residual.leaveOneOut) > WrongFrom * *residual.leaveOneOutError;
    return residual;
}

void Append(std::vector<Finding>& findings, std::vector<Finding> more) {
    std::move(more.begin(), more.end(), std::back_inserter(findings));
}

void AddResiduals(Problem const& problem, Solution& solution) {
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        solution.residuals.push_back(MakeResidual(problem, solution.calibration.mounting, i));
        Residual const& residual = solution.residuals.back();
        if (!residual.looksWrong) continue;
        double const metres = problem.references[i].metres;
        std::string const off = residual.leaveOneOut
                                    ? "the others make it " + Format(metres + *residual.leaveOneOut, 4) +
                                          " m instead of " + Format(metres, 4) + " m"
                                    : "the others see it above the horizon";
        solution.warnings.push_back({Kind::LooksWrong, GetName(problem, i) + " looks wrong: " + off});
    }
}

std::vector<Finding> FindContradictions(Problem const& problem, Search const& search, Answer const& answer) {
    std::vector<Finding> findings;
    if (search.other && IsElsewhere(*search.other, answer.mounting)) {
        findings.push_back({Kind::Ambiguous, "another mounting explains the references as well (" +
                                                 Describe(*search.other) +
                                                 "): add references, or hold a parameter fixed"});
    }
    if (answer.enlargement > 1) {
        findings.push_back({Kind::Disagreement, "the references disagree " + Format(answer.enlargement, 2) +
                                                    " times as much as marks within " + Format(problem.clickError, 3) +
                                                    " pixels would: all errors are enlarged by that factor"});
    }
    return findings;
}

}  // namespace

Undetermined::Undetermined(std::vector<Finding> reasons) : Error(Join(reasons)), reasons_(std::move(reasons)) {}

std::string GetName(Problem const& problem, std::size_t index) {
    Reference const& reference = problem.references[index];
    if (!reference.name.empty()) return '"' + reference.name + '"';
    auto const end = problem.references.begin() + static_cast<std::ptrdiff_t>(index) + 1;
    auto const number = std::count_if(problem.references.begin(), end,
                                      [&](Reference const& other) { return other.kind == reference.kind; });
    return (reference.kind == Reference::Kind::Ground ? "ground segment " : "vertical segment ") +
           std::to_string(number);
}

Solution Solve(Problem const& problem) {
    CheckProblem(problem);
    if (auto shortages = FindShortages(problem); !shortages.empty()) throw Undetermined(std::move(shortages));
    Search const search = FindNearlyBest(problem);
    Answer const answer = FindAnswer(problem, search.best.mounting);
    Estimate const estimate = MakeEstimate(answer.problem, answer.mounting);
    Determination determination = FindWeaknesses(answer.problem, answer.mounting, estimate);
    if (!determination.refusals.empty()) throw Undetermined(std::move(determination.refusals));

    Solution solution;
    solution.enlargement = answer.enlargement;
    solution.calibration = {answer.mounting, estimate.covariance};
    for (std::size_t p = 0; p < ParameterCount; ++p)
        solution.standardErrors[p] = std::sqrt((*estimate.covariance)[p][p]);
    solution.warnings = std::move(determination.warnings);
    Append(solution.warnings, FindContradictions(problem, search, answer));
    Append(solution.warnings, FindOddities(problem, answer.mounting));
    AddResiduals(answer.problem, solution);
    return solution;
}

}  // namespace qel::host::calibration
