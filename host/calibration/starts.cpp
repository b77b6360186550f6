// Every length of the model is proportional to the camera's height: for each tilt, roll and field of view of a coarse
// grid the best height is the median ratio of the true lengths to those at one metre.
#include <algorithm>
#include <cmath>
#include <vector>

#include "calibration/fit.hpp"
#include "calibration/residual.hpp"

namespace qel::host::calibration {
namespace {

struct Candidate {
    Mounting<double> mounting;
    double badness;
};

std::vector<double> GetGrid(Problem const& problem, Parameter parameter, std::vector<double> grid) {
    auto const& fixed = problem.fixed[static_cast<std::size_t>(parameter)];
    return fixed ? std::vector<double>{*fixed} : grid;
}

/// Length of each reference from a camera 1 m up; 0 where it is not seen.
std::vector<double> MeasureAtOneMetre(Problem const& problem, Mounting<double> const& mounting) {
    Model<double> const model(mounting, problem.size);
    std::vector<double> lengths;
    lengths.reserve(problem.references.size());
    for (Reference const& reference : problem.references) {
        auto const length = MeasureReference(model, reference.kind, reference.from, reference.to);
        lengths.push_back(length && std::isfinite(*length) && *length > 0 ? *length : 0);
    }
    return lengths;
}

double FindHeight(Problem const& problem, std::vector<double> const& lengths) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        if (lengths[i] > 0) ratios.push_back(problem.references[i].metres / lengths[i]);
    }
    if (ratios.empty()) return 1;
    auto const middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    Range const range = SearchRanges[static_cast<std::size_t>(Parameter::Height)];
    return std::clamp(*middle, range.low, range.high);
}

/// Bounded for each reference: a length off by half, and one that is not seen, count in full.
double GetBadness(Problem const& problem, std::vector<double> const& lengths, double height) {
    double badness = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        double const off =
            lengths[i] > 0 ? std::log(lengths[i] * height / problem.references[i].metres) / std::log(1.5) : 1;
        badness += std::min(1.0, off * off) + (lengths[i] > 0 ? 0 : 1);
    }
    return badness;
}

}  // namespace

std::vector<Mounting<double>> FindStarts(Problem const& problem, std::size_t count) {
    std::vector<Candidate> candidates;
    for (double const tilt : GetGrid(problem, Parameter::Tilt, {2, 6, 10, 15, 20, 27, 35, 45, 55, 65, 75, 85})) {
        for (double const roll : GetGrid(problem, Parameter::Roll, {-35, -20, -10, -4, 0, 4, 10, 20, 35})) {
            for (double const fov : GetGrid(problem, Parameter::VerticalFov, {12, 18, 26, 36, 48, 62, 80, 105})) {
                auto const lengths = MeasureAtOneMetre(problem, {tilt, roll, 1, fov});
                double const height =
                    problem.fixed[static_cast<std::size_t>(Parameter::Height)].value_or(FindHeight(problem, lengths));
                candidates.push_back({{tilt, roll, height, fov}, GetBadness(problem, lengths, height)});
            }
        }
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](Candidate const& a, Candidate const& b) { return a.badness < b.badness; });
    // Neighbours lead to the same answer: of those the best is enough.
    std::vector<Mounting<double>> starts;
    for (Candidate const& candidate : candidates) {
        if (starts.size() == count) break;
        bool const isNew = std::none_of(starts.begin(), starts.end(), [&](Mounting<double> const& start) {
            return std::abs(start.tilt - candidate.mounting.tilt) < 12 &&
                   std::abs(start.roll - candidate.mounting.roll) < 12 &&
                   std::abs(std::log(start.verticalFov / candidate.mounting.verticalFov)) < 0.45;
        });
        if (isNew) starts.push_back(candidate.mounting);
    }
    return starts;
}

}  // namespace qel::host::calibration
