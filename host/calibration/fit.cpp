// Least squares with errors in the marked positions: each residual is a length's error over the standard error that the
// clicks give that length. This standard error depends on the answer, so it is held while Ceres solves and then
// renewed, until both stand still.
#include "calibration/fit.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

#include <ceres/ceres.h>

#include "calibration/residual.hpp"

namespace qel::host::calibration {
namespace {

constexpr double PatientScale = 2, StrictScale = 6;
/// Residual of a reference that the mounting sees on or above the horizon: far worse than any seen one, and level, so
/// that a wrong reference neither blocks the way nor pulls.
constexpr double Unseen = 1000;

struct LengthError {
    Reference const& reference;
    Size size;
    double error;

    template <class T>
    bool operator()(T const* tilt, T const* roll, T const* height, T const* verticalFov, T* residual) const {
        Model<T> const model({*tilt, *roll, *height, *verticalFov}, size);
        Position<T> const from{T(reference.from.x), T(reference.from.y)};
        Position<T> const to{T(reference.to.x), T(reference.to.y)};
        std::optional<T> const length = MeasureReference(model, reference.kind, from, to);
        *residual = length ? (*length - reference.metres) / error : T(Unseen);
        return true;
    }
};

std::unique_ptr<ceres::LossFunction> MakeLoss(Robustness robustness) {
    if (robustness == Robustness::Patient) return std::make_unique<ceres::CauchyLoss>(PatientScale);
    return std::make_unique<ceres::TukeyLoss>(StrictScale);
}

ceres::Solver::Options MakeOptions(Robustness robustness) {
    // The patient fit only has to come near.
    bool const isPatient = robustness == Robustness::Patient;
    ceres::Solver::Options options;
    options.linear_solver_type = ceres::DENSE_QR;
    options.logging_type = ceres::SILENT;
    options.num_threads = 1;
    options.max_num_iterations = isPatient ? 30 : 60;
    options.function_tolerance = isPatient ? 1e-5 : 1e-12;
    options.parameter_tolerance = isPatient ? 1e-5 : 1e-10;
    return options;
}

/// Solves once, the standard errors held at those of values.
bool SolveHeld(Problem const& problem, std::array<double, ParameterCount>& values, Robustness robustness,
               std::optional<std::size_t> without) {
    ceres::Problem::Options ownership;
    ownership.loss_function_ownership = ceres::DO_NOT_TAKE_OWNERSHIP;
    auto const loss = MakeLoss(robustness);
    ceres::Problem equations(ownership);
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        if (i == without) continue;
        Reference const& reference = problem.references[i];
        auto const measured = Measure(ToMounting(values), problem.size, reference, problem.clickError);
        double const error = measured && std::isfinite(measured->error) ? measured->error : reference.metres;
        equations.AddResidualBlock(new ceres::AutoDiffCostFunction<LengthError, 1, 1, 1, 1, 1>(
                                       new LengthError{reference, problem.size, error}),
                                   loss.get(), &values[0], &values[1], &values[2], &values[3]);
    }
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        if (problem.fixed[p]) {
            equations.SetParameterBlockConstant(&values[p]);
        } else {
            equations.SetParameterLowerBound(&values[p], 0, SearchRanges[p].low);
            equations.SetParameterUpperBound(&values[p], 0, SearchRanges[p].high);
        }
    }
    ceres::Solver::Summary summary;
    ceres::Solve(MakeOptions(robustness), &equations, &summary);
    return summary.IsSolutionUsable();
}

/// Minus the logarithm of how likely the references are, the outliers' part bounded.
double GetCost(Problem const& problem, Mounting<double> const& mounting, std::optional<std::size_t> without) {
    double cost = 0;
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        if (i == without) continue;
        Reference const& reference = problem.references[i];
        auto const measured = Measure(mounting, problem.size, reference, problem.clickError);
        double const error = measured ? measured->error : reference.metres;
        double const off = measured ? (measured->length - reference.metres) / error : Unseen;
        double const bounded = PatientScale * PatientScale * std::log1p(off * off / (PatientScale * PatientScale));
        cost += 0.5 * bounded + std::log(std::clamp(error / reference.metres, 1e-6, 1.0));
    }
    return cost;
}

/// How far two mountings are apart, as a share of what matters to nobody.
double GetChange(std::array<double, ParameterCount> const& a, std::array<double, ParameterCount> const& b) {
    double change = 0;
    for (std::size_t p = 0; p < ParameterCount; ++p) change = std::max(change, std::abs(a[p] - b[p]));
    return change / 1e-6;
}

}  // namespace

std::optional<Fit> FitMounting(Problem const& problem, Mounting<double> const& start, Robustness robustness,
                               std::optional<std::size_t> without) {
    auto values = ToArray(start);
    int const rounds = robustness == Robustness::Patient ? 3 : 12;
    for (int round = 0; round < rounds; ++round) {
        auto const before = values;
        if (!SolveHeld(problem, values, robustness, without)) return std::nullopt;
        if (GetChange(values, before) < 1) break;
    }
    return Fit{ToMounting(values), GetCost(problem, ToMounting(values), without)};
}

double GetStrictWeight(double standardErrors) {
    double const share = standardErrors / StrictScale;
    double const rest = 1 - share * share;
    return std::abs(share) < 1 ? rest * rest : 0;
}

}  // namespace qel::host::calibration
