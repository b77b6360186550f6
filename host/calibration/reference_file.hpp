#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calibration/reference.hpp"

namespace qel::host::calibration {

/// Reads what a person has marked:
/// {"size": [W, H], "ground": [{"from": [X, Y], "to": [X, Y], "metres": L}, ...], "vertical": [{"foot": [X, Y],
/// "top": [X, Y], "metres": L}, ...]}; references may have "tolerance" (metres) and "name", the whole "click_error"
/// (pixels) and "fixed" ({"roll": 0, ...}). Throws Error with file, line and column.
Problem ReadProblem(std::string const& path);

/// The same from a text; name is how errors call it, others are members besides, which somebody else reads.
Problem ParseProblem(std::string const& name, std::string const& text,
                     std::vector<std::string_view> const& others = {});

}  // namespace qel::host::calibration
