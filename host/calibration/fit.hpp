#pragma once

#include <optional>
#include <vector>

#include "calibration/reference.hpp"

namespace qel::host::calibration {

/// How much a reference that disagrees may pull at the answer.
enum class Robustness {
    Patient,  ///< less the further off it is, yet always a little: finds the answer from afar
    Strict    ///< nothing beyond six standard errors: what is wrong leaves no trace in the answer
};

/// The values that a free parameter is looked for in; both ends belong to the range.
constexpr std::array<Range, ParameterCount> SearchRanges{{{-20, 90}, {-60, 60}, {0.2, 500}, {5, 150}}};

/// A mounting that was fitted to references.
struct Fit {
    Mounting<double> mounting;
    /// How badly the references agree, comparable between fits to the same references; smaller is better.
    double cost;
};

/// The mounting near start at which the references agree best; nothing where none is found.
/// without: index of a reference to leave out.
std::optional<Fit> FitMounting(Problem const& problem, Mounting<double> const& start, Robustness robustness,
                               std::optional<std::size_t> without = std::nullopt);

/// The weight of a reference that is so many standard errors off, by the strict rule: 1 on the spot, 0 from six on.
double GetStrictWeight(double standardErrors);

/// Mountings to start from, the most promising first; free parameters over all their ranges.
std::vector<Mounting<double>> FindStarts(Problem const& problem, std::size_t count);

}  // namespace qel::host::calibration
