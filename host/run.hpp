#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_sink.hpp"
#include "frame_source.hpp"

namespace qel::host {

/// What a run does, and with what.
struct RunPlan {
    /// Looks at a frame and adds to the result; returns the frame as it is to be shown, which may be another one.
    using Analyse = std::function<FrameSource::Frame(FrameSource::Frame const&, algorithm::video::Result&)>;

    FrameSource& source;
    Analyse analyse;
    std::vector<std::unique_ptr<FrameSink>> sinks;
    std::optional<std::uint64_t> maxFrames{};
    /// Called after each frame with the number of frames that are done; may be empty.
    std::function<void(std::uint64_t)> progress{};
    /// Called before a frame that does not continue the ones before: the source was away, or the frame has another
    /// size; may be empty.
    std::function<void()> startAnew{};
    /// Called with each frame before it is analysed; may wait, which belongs to no stage's time; false ends the run
    /// without that frame. May be empty.
    std::function<bool(FrameSource::Frame const&)> pace{};
    /// Called with each stage and what it has just taken for one frame; must not throw; may be empty.
    std::function<void(std::string const& stage, std::chrono::nanoseconds)> timed{};
    /// The number of the first frame.
    std::uint64_t firstIndex = 0;
};

/// The time that one step of a run took, over all frames.
struct StageTime {
    std::string stage;
    std::chrono::nanoseconds time{0};
};

/// How a run went.
struct RunReport {
    std::uint64_t frames = 0;
    std::uint64_t objects = 0;
    std::chrono::nanoseconds elapsed{0};
    /// "decode" (waiting for the next frame), "algorithm", then each sink.
    std::vector<StageTime> stages;
    Losses losses;
    /// What ended the run before its time; null when nothing did.
    std::exception_ptr error;
};

/// Reads the source to its end, to the plan's limit or until it is told to stop; each frame is analysed and then given
/// to every sink. An error ends the run; the sinks are finished all the same, but for one that failed itself.
RunReport Run(RunPlan& plan);

/// The report in words for a person, two lines with their line ends, and one more when anything was lost.
std::string Summarise(RunReport const& report, std::string const& source);

}  // namespace qel::host
