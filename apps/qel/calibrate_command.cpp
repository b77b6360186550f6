#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "calibration/calibration_file.hpp"
#include "calibration/reference_file.hpp"
#include "calibration/solver.hpp"
#include "calibration_arguments.hpp"
#include "command.hpp"
#include "error.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

namespace calibration = host::calibration;
using calibration::Problem;
using calibration::Reference;
using calibration::Solution;

struct Options {
    std::string references, size, output;
    std::vector<std::string> grounds, verticals, fixed;
    std::optional<double> clickError;
};

CLI::Option* AddList(CLI::App& command, std::string const& name, std::vector<std::string>& values,
                     std::string const& description, std::string const& type) {
    return command.add_option(name, values, description + "; may be repeated")
        ->type_name(type)
        ->take_all()
        ->expected(1)
        ->allow_extra_args(false);
}

void AddOptions(CLI::App& command, Options& options) {
    command.add_option("-r,--references", options.references, "What is marked in the picture, as JSON")
        ->type_name("FILE");
    command.add_option("--size", options.size, "Size of the picture")->type_name("WxH");
    AddList(command, "-g,--ground", options.grounds, "A segment on the ground and its length in metres",
            "X,Y:X,Y=METRES");
    AddList(command, "-v,--vertical", options.verticals,
            "An upright segment, foot first, such as a person or a door frame, and its height in metres",
            "X,Y:X,Y=METRES");
    AddList(command, "--fix", options.fixed, "Holds tilt, roll, height_m or vertical_fov at a known value",
            "NAME=VALUE");
    command.add_option("--click-error", options.clickError, "Standard error of a marked position in pixels (1)")
        ->type_name("PIXELS")
        ->check(CLI::PositiveNumber);
    command.add_option("-o,--output", options.output, "Writes the calibration that run and measure read")
        ->type_name("FILE");
    command.footer(
        "A length known to about 5 cm is written 1.75~0.05. The file of references holds the same:\n"
        "  {\"size\": [768, 576], \"ground\": [{\"from\": [141, 385], \"to\": [562, 349], \"metres\": 7.1}],\n"
        "   \"vertical\": [{\"foot\": [278, 321], \"top\": [278, 230], \"metres\": 1.75, \"tolerance\": 0.05}],\n"
        "   \"fixed\": {\"roll\": 0}, \"click_error\": 1}\n\n"
        "Example:\n"
        "  qel calibrate --size 768x576 --ground 141,385:562,349=7.1 --ground 562,349:526,186=13.0 \\\n"
        "    --vertical 278,321:278,230=1.75~0.05 --fix roll=0 --fix vertical_fov=27.3 --output camera.json");
}

Problem MakeProblem(Options const& options) {
    Problem problem;
    if (!options.references.empty()) problem = calibration::ReadProblem(options.references);
    if (!options.size.empty()) problem.size = ParseSize("--size", options.size);
    if (problem.size.width == 0) {
        throw host::UsageError(
            "calibrate what? --references FILE or --size WxH with segments (see qel calibrate --help)");
    }
    for (std::string const& text : options.grounds) {
        problem.references.push_back(ParseReference("--ground", Reference::Kind::Ground, text));
    }
    for (std::string const& text : options.verticals) {
        problem.references.push_back(ParseReference("--vertical", Reference::Kind::Vertical, text));
    }
    for (std::string const& text : options.fixed) ParseFixed(text, problem);
    if (options.clickError) problem.clickError = *options.clickError;
    return problem;
}

void PrintParameters(Problem const& problem, Solution const& solution) {
    auto const values = calibration::ToArray(solution.calibration.mounting);
    std::printf("parameter         value  standard error\n");
    for (std::size_t p = 0; p < calibration::ParameterCount; ++p) {
        std::printf("%-12s %10.3f  ", calibration::ParameterNames[p], values[p]);
        if (problem.fixed[p]) {
            std::printf("held fixed\n");
        } else {
            std::printf("%.3f %s\n", solution.standardErrors[p], calibration::ParameterUnits[p]);
        }
    }
}

std::string Show(std::optional<double> metres) { return metres ? host::FormatNumber(*metres, 3) : "-"; }

/// Off: the length that the other references give, less the true one; its standard error follows.
void PrintResiduals(Problem const& problem, Solution const& solution) {
    constexpr char Row[] = "%-28s %9s %9s %9s %15s%s\n";
    std::printf("\n");
    std::printf(Row, "reference (metres)", "true", "measured", "off", "standard error", "");
    for (std::size_t i = 0; i < problem.references.size(); ++i) {
        calibration::Residual const& residual = solution.residuals[i];
        std::printf(Row, calibration::GetName(problem, i).c_str(), Show(problem.references[i].metres).c_str(),
                    Show(residual.measured).c_str(), Show(residual.leaveOneOut).c_str(),
                    Show(residual.leaveOneOutError).c_str(), residual.looksWrong ? "  looks wrong" : "");
    }
}

int Run(Options const& options) {
    Problem const problem = MakeProblem(options);
    Solution const solution = calibration::Solve(problem);
    PrintParameters(problem, solution);
    PrintResiduals(problem, solution);
    if (std::fflush(stdout) != 0) throw host::Error("cannot write the standard output");
    for (calibration::Finding const& finding : solution.warnings) Say("warning: " + finding.text);
    if (!options.output.empty()) calibration::WriteCalibration(options.output, solution.calibration);
    return exit_code::Success;
}

int RunOrRefuse(Options const& options) {
    try {
        return Run(options);
    } catch (calibration::Undetermined const& error) {
        for (calibration::Finding const& reason : error.GetReasons()) Say(reason.text);
        Say("the references do not determine the camera; nothing is written");
        return exit_code::Failure;
    }
}

}  // namespace

std::function<int()> AddCalibrateCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("calibrate", "Finds how a camera is mounted from lengths marked in its picture");
    auto const options = std::make_shared<Options>();
    AddOptions(*command, *options);
    return [options] { return RunOrRefuse(*options); };
}

}  // namespace qel::app
