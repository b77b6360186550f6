#pragma once

#include <optional>
#include <string>

#include <boost/json/object.hpp>

#include "calibration/solver.hpp"

namespace qel::serve::api {

/// What POST /api/calibrate is asked for.
struct CalibrationRequest {
    host::calibration::Problem problem;
    /// Whose camera it is; empty for none.
    std::string stream;
    bool save = false;
};

/// Reads the references document of `qel calibrate`, which may hold "stream" and "save" besides.
/// Throws http::Problem 422 with what is wrong and where.
CalibrationRequest ReadCalibrationRequest(std::string const& body);

/// The answer: calibration, standard errors, residuals, warnings, horizon and grid.
boost::json::object ToJson(host::calibration::Problem const& problem, host::calibration::Solution const& solution);

/// Where the horizon crosses a picture; nothing where it does not.
struct Horizon {
    host::calibration::Pixel from, to;
};
std::optional<Horizon> FindHorizon(host::calibration::Mounting<double> const& mounting, host::calibration::Size size);

}  // namespace qel::serve::api
