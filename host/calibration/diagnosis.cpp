#include "calibration/diagnosis.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "calibration/text.hpp"
#include "qel/algorithm/calibration/engine.hpp"

namespace qel::host::calibration {
namespace {

using Kind = Finding::Kind;

/// Standard errors from which on a parameter counts as weakly determined, and as not determined: degrees, the height as
/// a share of itself.
constexpr std::array<double, ParameterCount> WeakErrors{1.5, 1.5, 0.1, 3};
constexpr std::array<double, ParameterCount> HopelessErrors{5, 5, 0.3, 10};

std::size_t Count(Problem const& problem, Reference::Kind kind) {
    return static_cast<std::size_t>(std::count_if(problem.references.begin(), problem.references.end(),
                                                  [kind](Reference const& r) { return r.kind == kind; }));
}

std::string ListFree(Problem const& problem) {
    std::string list;
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        if (!problem.fixed[p]) list += (list.empty() ? "" : ", ") + std::string(ParameterNames[p]);
    }
    return list;
}

/// The largest angle in degrees between a ground segment in use and their common direction; 90 when there are fewer
/// than two.
double GetSpreadOfDirections(Problem const& problem, Mounting<double> const& mounting, Estimate const& estimate) {
    Model<double> const model(mounting, problem.size);
    std::vector<double> angles;
    double c = 0, s = 0;
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        Reference const& reference = problem.references[i];
        if (reference.kind != Reference::Kind::Ground || estimate.weights[i] == 0) continue;
        auto const from = model.Unproject(reference.from), to = model.Unproject(reference.to);
        angles.push_back(std::atan2(to.y - from.y, to.x - from.x));
        // Doubled, a direction and its opposite are one.
        c += std::cos(2 * angles.back());
        s += std::sin(2 * angles.back());
    }
    if (angles.size() < 2) return 90;
    double const common = std::atan2(s, c) / 2;
    double spread = 0;
    for (double const angle : angles) {
        double const off = std::abs(std::remainder(angle - common, std::numbers::pi));
        spread = std::max(spread, off * 180 / std::numbers::pi);
    }
    return spread;
}

/// Why the references may be too weak, in the order in which a person should hear it.
std::vector<Finding> FindCauses(Problem const& problem, Mounting<double> const& mounting, Estimate const& estimate) {
    std::vector<Finding> causes;
    if (Count(problem, Reference::Kind::Ground) == 0) {
        causes.push_back({Kind::HeightsAlone,
                          "heights alone do not tell the tilt from the field of view: mark lengths on the ground as "
                          "well, or hold one of the two fixed"});
    }
    constexpr double NearlyParallel = 12;
    double const spread = GetSpreadOfDirections(problem, mounting, estimate);
    if (spread < NearlyParallel) {
        causes.push_back({Kind::NearlyParallel, "all segments on the ground are nearly parallel (within " +
                                                    Format(std::ceil(2 * spread)) +
                                                    " degrees of one another): mark some across them"});
    }
    return causes;
}

Finding MakeUndetermined(std::string const& names) {
    return {Kind::Undetermined, "the references leave " + names +
                                    " open: add references elsewhere in the picture and in other directions, or hold a "
                                    "parameter fixed"};
}

/// The parameters whose standard error reaches the limit, with it; all free ones without a covariance.
std::string ListBeyond(Problem const& problem, Mounting<double> const& mounting, Estimate const& estimate,
                       std::array<double, ParameterCount> const& limits) {
    if (!estimate.covariance) return ListFree(problem);
    std::string list;
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        bool const isHeight = p == static_cast<std::size_t>(Parameter::Height);
        double const error = std::sqrt((*estimate.covariance)[p][p]);
        if (error < limits[p] * (isHeight ? mounting.height : 1)) continue;
        list += (list.empty() ? "" : ", ") + std::string(ParameterNames[p]) + " (+/- " + Format(error, 2) + " " +
                ParameterUnits[p] + ")";
    }
    return list;
}

}  // namespace

std::vector<Finding> FindShortages(Problem const& problem) {
    std::size_t const free = CountFree(problem), given = problem.references.size();
    if (given >= free) return {};
    return {{Kind::TooFew, "too few references: " + std::to_string(free) + " parameters are free (" +
                               ListFree(problem) + ") and " + std::to_string(given) +
                               (given == 1 ? " reference is" : " references are") +
                               " given: add references, or hold parameters fixed"}};
}

Determination FindWeaknesses(Problem const& problem, Mounting<double> const& mounting, Estimate const& estimate) {
    Determination determination;
    std::vector<Finding> const causes = FindCauses(problem, mounting, estimate);
    std::string const hopeless = ListBeyond(problem, mounting, estimate, HopelessErrors);
    if (!hopeless.empty()) {
        determination.refusals = causes;
        determination.refusals.push_back(MakeUndetermined(hopeless));
        return determination;
    }
    std::string const weak = ListBeyond(problem, mounting, estimate, WeakErrors);
    if (!weak.empty()) {
        determination.warnings = causes;
        determination.warnings.push_back(MakeUndetermined(weak));
    }
    if (CountFree(problem) > 0 && problem.references.size() == CountFree(problem)) {
        determination.warnings.push_back(
            {Kind::NothingSpare,
             "there are just as many references as free parameters: nothing checks them; add some"});
    }
    return determination;
}

std::vector<Finding> FindOddities(Problem const& problem, Mounting<double> const& mounting) {
    std::vector<Finding> findings;
    auto const values = ToArray(mounting);
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        Range const range = SearchRanges[p];
        double const margin = 1e-6 * (range.high - range.low);
        if (problem.fixed[p] || (values[p] > range.low + margin && values[p] < range.high - margin)) continue;
        findings.push_back({Kind::AtBound, std::string(ParameterNames[p]) + " lies at the end of the searched range, " +
                                               Format(range.low) + " to " + Format(range.high) + " " +
                                               ParameterUnits[p] + ": check the references, or hold it fixed"});
    }
    algorithm::calibration::Engine engine;
    engine.SetCalibrationParams(ToParams(mounting));
    if (engine.GetCalibrationStatus() == 0) {
        findings.push_back({Kind::SteepView,
                            "the camera looks steeply down: heights will be measured sideways in the picture, not by "
                            "their tops as the vertical references were"});
    }
    return findings;
}

}  // namespace qel::host::calibration
