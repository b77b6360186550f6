#include <algorithm>

#include "api/calibration_document.hpp"
#include "api/routes.hpp"
#include "calibration/calibration_file.hpp"

namespace qel::serve::api {
namespace {

namespace calibration = host::calibration;

/// Writes a calibration beside the configuration and has the stream use it; returns the name of the file.
std::string Save(Services const& services, std::string const& stream, calibration::Calibration const& found) {
    auto const specs = services.store.GetStreams();
    bool const isThere =
        std::any_of(specs.begin(), specs.end(), [&](StreamSpec const& spec) { return spec.id == stream; });
    if (!isThere) throw Refused(std::vector<Fault>{{"stream", "there is no stream '" + stream + "'"}});
    std::string name = stream + ".calibration.json";
    calibration::WriteCalibration((services.folder / name).string(), found);
    services.store.Patch({{"streams", {{stream, {{"calibration", name}}}}}});
    return name;
}

http::Response Calibrate(Services const& services, http::Request const& request) {
    CalibrationRequest const asked = ReadCalibrationRequest(request.body);
    try {
        calibration::Solution const solution = calibration::Solve(asked.problem);
        boost::json::object answer = ToJson(asked.problem, solution);
        if (asked.save) answer["saved"] = Save(services, asked.stream, solution.calibration);
        return http::MakeJson(answer);
    } catch (calibration::Undetermined const& error) {
        std::vector<Fault> faults;
        for (calibration::Finding const& reason : error.GetReasons()) faults.push_back({"", reason.text});
        throw http::Problem(422, "the references do not determine the camera", std::move(faults));
    }
}

}  // namespace

void AddCalibrationRoutes(http::Router& router, Services const& services) {
    router.Add({.method = "POST",
                .pattern = "/api/calibrate",
                .answer = [services](http::Request const& request) { return Calibrate(services, request); },
                .work = http::Route::Work::Slow,
                .bodyTypes = {"application/json"}});
}

}  // namespace qel::serve::api
