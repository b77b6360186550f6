#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "calibration/calibration.hpp"
#include "calibration/reference.hpp"
#include "error.hpp"

namespace qel::host::calibration {

/// Something that a person should know about an answer, or about why there is none.
struct Finding {
    enum class Kind {
        TooFew,          ///< fewer references than free parameters
        NothingSpare,    ///< just as many: nothing checks the references
        HeightsAlone,    ///< no segment on the ground
        NearlyParallel,  ///< all segments on the ground point one way
        Undetermined,    ///< a parameter is free to move far without the references noticing
        NoAnswer,        ///< no mounting in the searched ranges sees the references
        AtBound,         ///< a parameter lies at the end of the range that it is looked for in
        Ambiguous,       ///< another mounting explains the references as well
        Disagreement,    ///< the references disagree by more than the click error explains
        LooksWrong,      ///< one reference disagrees with all others
        SteepView        ///< the engine measures heights sideways in such a view
    };

    Kind kind;
    std::string text;
};

/// The references do not determine the answer; what() names every reason, one a line.
class Undetermined : public Error {
public:
    explicit Undetermined(std::vector<Finding> reasons);

    std::vector<Finding> const& GetReasons() const noexcept { return reasons_; }

private:
    std::vector<Finding> reasons_;
};

/// How one reference fits the answer; lengths in metres.
struct Residual {
    /// Length by the answer; nothing where part of the reference is seen on or above the horizon.
    std::optional<double> measured;
    /// Length by the answer to all the other references, less the true length; nothing where these determine none.
    std::optional<double> leaveOneOut;
    /// Standard error of leaveOneOut.
    std::optional<double> leaveOneOutError;
    bool looksWrong = false;
};

/// The mounting that was found, how sure it is, and how well each reference agrees with it.
struct Solution {
    /// With the covariance of its errors; fixed parameters have none.
    Calibration calibration;
    /// In the units of the parameters; 0 for fixed ones.
    std::array<double, ParameterCount> standardErrors{};
    /// One a reference, in their order.
    std::vector<Residual> residuals;
    std::vector<Finding> warnings;
    /// Factor by which all errors were enlarged because the references disagree; 1 when they do not.
    double enlargement = 1;
};

/// Finds the mounting that the references agree on best; a wrong one among them does no harm.
/// Throws UsageError for a problem that makes no sense, naming the reference, and Undetermined.
Solution Solve(Problem const& problem);

/// What messages call the reference of this index: its own name, or kind and number.
std::string GetName(Problem const& problem, std::size_t index);

}  // namespace qel::host::calibration
