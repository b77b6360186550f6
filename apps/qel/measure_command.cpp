#include <cstdio>
#include <memory>
#include <string>

#include "calibration/calibration_file.hpp"
#include "calibration/measurement.hpp"
#include "calibration_arguments.hpp"
#include "command.hpp"
#include "error.hpp"

namespace qel::app {
namespace {

namespace calibration = host::calibration;

struct Options {
    std::string calibration, size, from, to, foot;
    double pixels = 0;
    double clickError = 1;
    bool json = false;
};

void AddOptions(CLI::App& command, Options& options) {
    command
        .add_option("-c,--calibration", options.calibration, "How the camera is mounted, as qel calibrate writes it")
        ->type_name("FILE")
        ->required();
    command.add_option("--size", options.size, "Size of the picture")->type_name("WxH")->required();
    auto* const from = command.add_option("--from", options.from, "One end of a distance on the ground");
    auto* const to = command.add_option("--to", options.to, "Its other end");
    auto* const foot = command.add_option("--foot", options.foot, "Where an object touches the ground, bottom centre");
    auto* const pixels = command.add_option("--pixels", options.pixels, "How tall it is in the picture");
    from->type_name("X,Y")->needs(to)->excludes(foot);
    to->type_name("X,Y")->needs(from)->excludes(foot);
    foot->type_name("X,Y")->needs(pixels);
    pixels->type_name("H")->needs(foot)->check(CLI::NonNegativeNumber);
    command.add_option("--click-error", options.clickError, "Standard error of a position in pixels")
        ->type_name("PIXELS")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    command.add_flag("--json", options.json, "Prints an object of JSON");
    command.footer(
        "Positions count from the picture's top left corner, in pixels. The plus/minus holds the true length in 95 % "
        "of\n"
        "cases: it stands for the click error and, where the file has a covariance, for the calibration's own.\n\n"
        "Examples:\n"
        "  qel measure --calibration camera.json --size 768x576 --from 120,400 --to 380,410\n"
        "  qel measure --calibration camera.json --size 768x576 --foot 250,420 --pixels 85");
}

calibration::Pixel ParseInside(std::string const& option, std::string const& text, calibration::Size size) {
    calibration::Pixel const pixel = ParsePixel(option, text);
    bool const isInside = pixel.x >= 0 && pixel.x <= size.width && pixel.y >= 0 && pixel.y <= size.height;
    if (!isInside) throw host::UsageError(option + ": " + text + " lies outside the picture");
    return pixel;
}

void Print(char const* kind, calibration::Measurement const& measurement, bool json) {
    if (json) {
        std::printf("{\"%s_m\":%.6g,\"plus_minus_m\":%.3g}\n", kind, measurement.metres, measurement.GetPlusMinus());
    } else {
        std::printf("%.3f m +/- %.3f m\n", measurement.metres, measurement.GetPlusMinus());
    }
}

int Run(Options const& options) {
    if (options.from.empty() && options.foot.empty()) {
        throw host::UsageError("measure what? --from X,Y --to X,Y or --foot X,Y --pixels H (see qel measure --help)");
    }
    auto const size = ParseSize("--size", options.size);
    calibration::Measurer const measurer(calibration::ReadCalibration(options.calibration), size, options.clickError);
    if (options.foot.empty()) {
        auto const from = ParseInside("--from", options.from, size), to = ParseInside("--to", options.to, size);
        Print("distance", measurer.GetDistance(from, to), options.json);
    } else {
        Print("height", measurer.GetHeight(ParseInside("--foot", options.foot, size), options.pixels), options.json);
    }
    if (std::fflush(stdout) != 0) throw host::Error("cannot write the standard output");
    return exit_code::Success;
}

}  // namespace

std::function<int()> AddMeasureCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("measure", "Measures a distance or a height in a picture");
    auto const options = std::make_shared<Options>();
    AddOptions(*command, *options);
    return [options] { return Run(*options); };
}

}  // namespace qel::app
