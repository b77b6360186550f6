#include "api/calibration_document.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <boost/json/parse.hpp>

#include "api/routes.hpp"
#include "calibration/calibration_file.hpp"
#include "calibration/ground_grid.hpp"
#include "calibration/model.hpp"
#include "calibration/reference_file.hpp"

namespace qel::serve::api {
namespace {

namespace calibration = host::calibration;
namespace json = boost::json;

/// Solving takes a second or two for so many and minutes for some hundreds, for which neither a client nor the end of
/// the server can wait.
constexpr std::size_t MaxReferences = 32;

json::value ToJson(std::optional<double> number) { return number ? json::value(*number) : json::value(nullptr); }

json::array ToJson(calibration::Pixel const& pixel) { return {pixel.x, pixel.y}; }

bool IsFinite(calibration::Pixel const& pixel) { return std::isfinite(pixel.x) && std::isfinite(pixel.y); }

json::object MakeStandardErrors(calibration::Solution const& solution) {
    json::object errors;
    for (std::size_t p = 0; p < calibration::ParameterCount; ++p) {
        errors[calibration::ParameterNames[p]] = solution.standardErrors[p];
    }
    return errors;
}

json::array MakeResiduals(calibration::Problem const& problem, calibration::Solution const& solution) {
    json::array residuals;
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        calibration::Reference const& reference = problem.references[i];
        calibration::Residual const& residual = solution.residuals[i];
        residuals.push_back({{"name", calibration::GetName(problem, i)},
                             {"kind", reference.kind == calibration::Reference::Kind::Ground ? "ground" : "vertical"},
                             {"metres", reference.metres},
                             {"measured", ToJson(residual.measured)},
                             {"off", ToJson(residual.leaveOneOut)},
                             {"standard_error", ToJson(residual.leaveOneOutError)},
                             {"looks_wrong", residual.looksWrong}});
    }
    return residuals;
}

json::array MakeGrid(calibration::Mounting<double> const& mounting, calibration::Size size) {
    json::array grid;
    for (calibration::GridLine const& line : calibration::MakeGroundGrid(mounting, size)) {
        if (!IsFinite(line.from) || !IsFinite(line.to)) continue;
        bool const isLabelled = !line.label.empty() && IsFinite(line.labelAt);
        grid.push_back({{"from", ToJson(line.from)},
                        {"to", ToJson(line.to)},
                        {"label", isLabelled ? line.label : std::string()},
                        {"label_at", isLabelled ? json::value(ToJson(line.labelAt)) : json::value(nullptr)}});
    }
    return grid;
}

}  // namespace

CalibrationRequest ReadCalibrationRequest(std::string const& body) {
    json::object const document = ParseObject(body);
    CalibrationRequest request;
    std::vector<Fault> faults;
    if (auto const* const stream = document.if_contains("stream")) {
        if (stream->is_string()) {
            request.stream = std::string(stream->get_string());
        } else if (!stream->is_null()) {
            faults.push_back({"stream", "is no text"});
        }
    }
    if (auto const* const save = document.if_contains("save")) {
        if (save->is_bool()) {
            request.save = save->get_bool();
        } else {
            faults.push_back({"save", "is neither true nor false"});
        }
    }
    if (request.save && request.stream.empty()) faults.push_back({"stream", "is missing: whose calibration is saved?"});
    if (!faults.empty()) throw Refused(faults);
    try {
        // From the body itself: places in it are what errors name.
        request.problem = calibration::ParseProblem("the references", body, {"stream", "save"});
    } catch (host::Error const& error) {
        throw http::Problem(422, error.what());
    }
    if (request.problem.references.size() > MaxReferences) {
        throw http::Problem(422, "there are more than " + std::to_string(MaxReferences) +
                                     " references: mark fewer, or have qel calibrate take its time");
    }
    return request;
}

std::optional<Horizon> FindHorizon(calibration::Mounting<double> const& mounting, calibration::Size size) {
    // What a pixel's scale says of its depth is linear over the picture, and nought on the horizon.
    calibration::Model<double> const model(mounting, size);
    double const width = size.width, height = size.height;
    auto const scale = [&model](double x, double y) { return model.Unproject({x, y}).scale; };
    std::array<calibration::Pixel, 4> const corners{{{0, 0}, {width, 0}, {width, height}, {0, height}}};
    std::vector<calibration::Pixel> crossings;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        auto const& a = corners[i];
        auto const& b = corners[(i + 1) % corners.size()];
        double const atA = scale(a.x, a.y), atB = scale(b.x, b.y);
        // One end belongs to each side, so that a corner counts once.
        if ((atA > 0) == (atB > 0)) continue;
        double const part = atA / (atA - atB);
        crossings.push_back({a.x + part * (b.x - a.x), a.y + part * (b.y - a.y)});
    }
    if (crossings.size() != 2 || !IsFinite(crossings[0]) || !IsFinite(crossings[1])) return std::nullopt;
    if (crossings[0].x > crossings[1].x) std::swap(crossings[0], crossings[1]);
    return Horizon{crossings[0], crossings[1]};
}

json::object ToJson(calibration::Problem const& problem, calibration::Solution const& solution) {
    auto const& mounting = solution.calibration.mounting;
    json::array warnings;
    for (calibration::Finding const& finding : solution.warnings) warnings.emplace_back(finding.text);
    auto const horizon = FindHorizon(mounting, problem.size);
    json::object answer{
        {"calibration", json::parse(calibration::FormatCalibration(solution.calibration))},
        {"standard_errors", MakeStandardErrors(solution)},
        {"residuals", MakeResiduals(problem, solution)},
        {"warnings", std::move(warnings)},
        {"horizon", nullptr},
        {"grid", MakeGrid(mounting, problem.size)},
    };
    if (horizon) answer["horizon"] = json::object{{"from", ToJson(horizon->from)}, {"to", ToJson(horizon->to)}};
    return answer;
}

}  // namespace qel::serve::api
