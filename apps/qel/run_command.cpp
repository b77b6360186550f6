#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "algorithm_chain.hpp"
#include "annotation_sink.hpp"
#include "calibration/calibration_file.hpp"
#include "calibration/grid_overlay.hpp"
#include "calibration/object_measurer.hpp"
#include "catalogue.hpp"
#include "command.hpp"
#include "error.hpp"
#include "interrupt.hpp"
#include "json_lines_sink.hpp"
#include "memory.hpp"
#include "models_option.hpp"
#include "plugins_option.hpp"
#include "progress.hpp"
#include "run.hpp"
#include "run_outputs.hpp"
#include "snapshot_sink.hpp"
#include "stream_options.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

struct Options {
    std::string video;
    std::vector<std::string> algorithms;
    std::vector<std::string> plugins;
    std::vector<std::string> settings;
    RunOutputs outputs;
    std::optional<std::uint64_t> maxFrames;
    std::string calibration;
    std::optional<std::string> models;
    bool uncertainty = false;
    bool quiet = false;
    StreamOptions stream;
};

/// What is wrong with a number of frames; nothing when it is one.
std::string CheckFrameCount(std::string const& text) {
    bool const isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber && text.find_first_not_of('0') != std::string::npos) return {};
    return "'" + text + "' is no number of frames: give a whole number from 1";
}

void AddOptions(CLI::App& command, Options& options) {
    command.add_option("VIDEO", options.video, "The video: a file, or a URI that GStreamer opens (rtsp://...)")
        ->required();
    command
        .add_option("-a,--algorithm", options.algorithms,
                    "Which algorithm to run: its type name, or the last part of it; may be repeated, they run in order")
        ->default_str("motion, or the one that --plugins brings")
        ->take_all()
        ->expected(1)
        ->allow_extra_args(false);
    AddPluginsOption(command, options.plugins);
    command
        .add_option("-s,--set", options.settings,
                    "Sets a property, or ALGORITHM.NAME where several have one of that name; may be repeated")
        ->type_name("NAME=VALUE")
        ->take_all()
        ->expected(1)
        ->allow_extra_args(false);
    command
        .add_option("-o,--output", options.outputs.results,
                    "Where the results go, a line of JSON a frame; - is the standard output")
        ->type_name("FILE")
        ->capture_default_str();
    command
        .add_option("--annotate", options.outputs.video, "Writes the video with the objects drawn on it (MP4, H.264)")
        ->type_name("FILE.mp4");
    command
        .add_option("--snapshot", options.outputs.picture,
                    "Draws a sheet of up to nine annotated frames from all over the run")
        ->type_name("FILE.png");
    command.add_option("-n,--max-frames", options.maxFrames, "Stops after so many frames")
        ->type_name("N")
        ->check(CheckFrameCount);
    auto* const calibration =
        command
            .add_option("-c,--calibration", options.calibration,
                        "How the camera is mounted, as qel calibrate writes it: objects get metres")
            ->type_name("FILE");
    command.add_flag("--uncertainty", options.uncertainty, "States plus/minus of every length")->needs(calibration);
    AddStreamOptions(command, options.stream);
    AddModelsOption(command, options.models);
    command.add_flag("-q,--quiet", options.quiet, "No progress bar and no summary");
    command.footer(
        "Examples:\n"
        "  qel run street.avi > street.jsonl\n"
        "  qel run street.avi --output street.jsonl --annotate street.mp4 --snapshot street.png\n"
        "  qel run street.avi --algorithm motion --algorithm privacy_mask --set mask_motion=shapes --annotate "
        "safe.mp4\n"
        "  qel run rtsp://camera/stream --set threshold=4 --max-frames 1000\n"
        "  qel run street.avi --plugins build --output spots.jsonl\n\n"
        "Properties are listed by: qel algorithms\n\n"
        "With --calibration each object gets ground_x_m, ground_y_m, distance_m and height_m, or measurement_error "
        "with\n"
        "the reason; the annotated video shows the heights and a grid in metres on the ground.");
}

/// Draws a grid in metres on the ground.
host::AnnotationSink::Backdrop MakeBackdrop(host::calibration::Calibration const& calibration) {
    return [mounting = calibration.mounting](host::Picture& picture) {
        host::calibration::DrawGroundGrid(picture, picture.size, mounting);
    };
}

std::vector<std::unique_ptr<host::FrameSink>> MakeSinks(
    Options const& options, host::Location const& location, host::FrameSource const& source,
    std::optional<host::calibration::Calibration> const& calibration) {
    std::vector<std::unique_ptr<host::FrameSink>> sinks;
    sinks.push_back(std::make_unique<host::JsonLinesSink>(options.outputs.results, location.name));
    if (!options.outputs.video.empty()) {
        sinks.push_back(std::make_unique<host::AnnotationSink>(options.outputs.video, source.GetFrameSize(),
                                                               source.GetFrameRate(),
                                                               calibration ? MakeBackdrop(*calibration) : nullptr));
    }
    if (!options.outputs.picture.empty())
        sinks.push_back(std::make_unique<host::SnapshotSink>(options.outputs.picture));
    return sinks;
}

std::optional<std::uint64_t> ExpectedFrames(Options const& options, host::FrameSource const& source) {
    auto const expected = source.GetExpectedFrames();
    if (!options.maxFrames) return expected;
    return expected ? std::min(*expected, *options.maxFrames) : options.maxFrames;
}

int ReportInterruption(host::RunReport const& report, host::FrameSource const& source, int signal) {
    auto const expected = source.GetExpectedFrames();
    Say("interrupted after " + std::to_string(report.frames) +
        (expected ? " of " + std::to_string(*expected) : std::string()) + " frames; what was written is complete");
    return 128 + signal;
}

/// The names that were given; without any, the one algorithm that --plugins brings, or motion without --plugins.
std::vector<std::string> ChooseAlgorithms(Options const& options, std::vector<std::string> const& fromFolders) {
    if (!options.algorithms.empty()) return options.algorithms;
    if (options.plugins.empty()) return {"motion"};
    if (fromFolders.size() == 1) return fromFolders;
    throw host::UsageError(fromFolders.empty()
                               ? "--plugins brings no algorithm of its own: name an installed one with --algorithm"
                               : "--plugins brings several algorithms: name one or more of " + host::Join(fromFolders) +
                                     " with --algorithm");
}

host::AlgorithmChain MakeAlgorithms(host::Runtime& runtime, Options const& options,
                                    std::vector<std::string> const& fromFolders) {
    std::vector<hash::MurmurThree32> ids;
    for (std::string const& name : ChooseAlgorithms(options, fromFolders)) ids.push_back(host::FindAlgorithm(name));
    std::vector<host::Setting> settings;
    for (std::string const& text : options.settings) settings.push_back(host::ParseSetting(text));
    return {runtime, ids, settings};
}

int Run(Options const& options) {
    std::vector<std::string> const fromFolders = LoadPluginsOrWarn(options.plugins);
    host::Interrupt const interrupt;
    host::Runtime runtime = MakeRuntime(options.models);
    host::AlgorithmChain algorithms = MakeAlgorithms(runtime, options, fromFolders);
    std::optional<host::calibration::Calibration> calibration;
    std::optional<host::calibration::ObjectMeasurer> measurer;
    if (!options.calibration.empty()) {
        calibration = host::calibration::ReadCalibration(options.calibration);
        measurer.emplace(*calibration, options.uncertainty);
    }
    host::Location const location = host::Locate(options.video);
    CheckRunOutputs(options.outputs, location, options.calibration);
    CheckStreamOptions(options.stream, location);
    std::optional<host::Progress> progress;
    if (host::IsStream(location)) host::PrepareForLongRun();
    auto const opened = host::OpenSource(
        location, algorithms.GetColourFormats(), ToPolicy(options.stream), [&] { return interrupt.GetSignal() != 0; },
        [&](host::SourceNews, std::string const& loss) {
            if (progress) progress->Clear();
            Say("warning: " + loss);
        });
    host::FrameSource& source = *opened;

    host::RunReport report;
    {
        progress.emplace(ExpectedFrames(options, source), !options.quiet);
        host::RunPlan plan{
            .source = source,
            .analyse =
                [&](host::FrameSource::Frame const& frame, algorithm::video::Result& result) {
                    auto shown = algorithms.Process(frame, result);
                    auto const size = frame.GetSize();
                    if (measurer) measurer->Measure(result, {int(size.width), int(size.height)});
                    return shown;
                },
            .sinks = interrupt.GetSignal() == 0 ? MakeSinks(options, location, source, calibration)
                                                : std::vector<std::unique_ptr<host::FrameSink>>(),
            .maxFrames = options.maxFrames,
            .progress = [&](std::uint64_t frames) { progress->Update(frames); },
            .startAnew =
                [&] {
                    algorithms.Reset();
                    host::ReleaseFreeMemory();
                },
        };
        report = host::Run(plan);
        progress.reset();
    }
    if (!options.quiet) std::fputs(host::Summarise(report, location.name).c_str(), stderr);
    if (report.error) std::rethrow_exception(report.error);
    if (auto const warning = source.GetWarning()) Say("warning: " + *warning);
    if (int const signal = interrupt.GetSignal(); signal != 0) return ReportInterruption(report, source, signal);
    return exit_code::Success;
}

}  // namespace

std::function<int()> AddRunCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("run", "Runs algorithms on a video and writes what they find");
    auto const options = std::make_shared<Options>();
    AddOptions(*command, *options);
    return [options] { return Run(*options); };
}

}  // namespace qel::app
