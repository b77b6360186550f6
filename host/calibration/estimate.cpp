#include "calibration/estimate.hpp"

#include <algorithm>
#include <cmath>

#include <Eigen/Dense>

#include "calibration/residual.hpp"

namespace qel::host::calibration {
namespace {

constexpr double Unseen = 1000;

using Matrix = Eigen::MatrixXd;

/// The inverse of the information, found in units in which every parameter's error is near one: degrees, and tenths of
/// the camera's height.
std::optional<Covariance> Invert(Problem const& problem, Mounting<double> const& mounting, Matrix information) {
    Eigen::Vector4d scales(1, 1, 0.1 * std::abs(mounting.height), 1);
    std::vector<Eigen::Index> free;
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        if (!problem.fixed[p]) free.push_back(static_cast<Eigen::Index>(p));
    }
    Matrix const scaled = (scales.asDiagonal() * information * scales.asDiagonal())(free, free);
    Covariance covariance{};
    if (free.empty()) return covariance;
    Eigen::SelfAdjointEigenSolver<Matrix> const solver(scaled);
    double const largest = solver.eigenvalues().maxCoeff();
    if (!(largest > 0) || !(solver.eigenvalues().minCoeff() > 1e-12 * largest)) return std::nullopt;
    Matrix const inverse =
        solver.eigenvectors() * solver.eigenvalues().cwiseInverse().asDiagonal() * solver.eigenvectors().transpose();
    for (std::size_t row = 0; row < free.size(); ++row) {
        for (std::size_t column = 0; column < free.size(); ++column) {
            auto const r = static_cast<Eigen::Index>(row), c = static_cast<Eigen::Index>(column);
            covariance[static_cast<std::size_t>(free[row])][static_cast<std::size_t>(free[column])] =
                inverse(r, c) * scales(free[row]) * scales(free[column]);
        }
    }
    return covariance;
}

}  // namespace

std::size_t CountFree(Problem const& problem) {
    return static_cast<std::size_t>(
        std::count_if(problem.fixed.begin(), problem.fixed.end(), [](auto const& fixed) { return !fixed; }));
}

Estimate MakeEstimate(Problem const& problem, Mounting<double> const& mounting, std::optional<std::size_t> without) {
    Estimate estimate;
    Matrix information = Matrix::Zero(ParameterCount, ParameterCount);
    double weights = 0;
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        Reference const& reference = problem.references[i];
        auto const measured = Measure(mounting, problem.size, reference, problem.clickError);
        double const deviation = measured ? (measured->length - reference.metres) / measured->error : Unseen;
        double const weight = i == without ? 0 : GetStrictWeight(deviation);
        estimate.deviations.push_back(deviation);
        estimate.weights.push_back(weight);
        if (weight == 0) continue;
        Eigen::Map<Eigen::Vector4d const> const derivatives(measured->byParameter.data());
        information += weight / (measured->error * measured->error) * derivatives * derivatives.transpose();
        estimate.squares += weight * deviation * deviation;
        weights += weight;
    }
    estimate.spare = weights - static_cast<double>(CountFree(problem));
    estimate.covariance = Invert(problem, mounting, information);
    return estimate;
}

}  // namespace qel::host::calibration
