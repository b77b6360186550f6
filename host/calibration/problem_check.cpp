#include "calibration/problem_check.hpp"

#include <cmath>
#include <string>

#include "calibration/solver.hpp"
#include "calibration/text.hpp"
#include "error.hpp"

namespace qel::host::calibration {
namespace {

/// A mark may lie beside the picture, where a line was drawn on, but not further than its size.
bool IsNear(Pixel pixel, Size size) {
    return pixel.x >= -size.width && pixel.x <= 2.0 * size.width && pixel.y >= -size.height &&
           pixel.y <= 2.0 * size.height;
}

[[noreturn]] void Refuse(std::string const& what, std::string const& why) { throw UsageError(what + ": " + why); }

void CheckReference(Problem const& problem, std::size_t index) {
    Reference const& reference = problem.references[index];
    auto const refuse = [&](std::string const& why) { Refuse(GetName(problem, index), why); };
    if (!(reference.metres > 0) || !std::isfinite(reference.metres)) {
        refuse("its length must be more than 0 m, not " + Format(reference.metres));
    }
    if (!(reference.tolerance >= 0) || !std::isfinite(reference.tolerance)) {
        refuse("its tolerance must be 0 m or more, not " + Format(reference.tolerance));
    }
    if (!IsNear(reference.from, problem.size) || !IsNear(reference.to, problem.size)) {
        refuse("it lies outside the picture");
    }
    double const extent = std::hypot(reference.from.x - reference.to.x, reference.from.y - reference.to.y);
    if (!(extent >= 1)) refuse("its ends must be a pixel apart at least");
    if (reference.kind == Reference::Kind::Vertical && !(reference.to.y < reference.from.y)) {
        refuse("its top must be above its foot in the picture");
    }
}

}  // namespace

void CheckProblem(Problem const& problem) {
    if (problem.size.width <= 0 || problem.size.height <= 0) Refuse("the picture", "its size must be positive");
    if (!(problem.clickError > 0) || !std::isfinite(problem.clickError)) {
        Refuse("the click error", "it must be more than 0 pixels, not " + Format(problem.clickError));
    }
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        auto const& fixed = problem.fixed[p];
        Range const range = ParameterRanges[p];
        if (fixed && !(*fixed >= range.low && *fixed <= range.high)) {
            Refuse(ParameterNames[p], "it must be " + Format(range.low) + " to " + Format(range.high) + " " +
                                          ParameterUnits[p] + ", not " + Format(*fixed));
        }
    }
    for (std::size_t i = 0; i < problem.references.size(); ++i) CheckReference(problem, i);
}

}  // namespace qel::host::calibration
