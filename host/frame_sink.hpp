#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "qel/algorithm/video/result.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::host {

/// A frame that an algorithm has looked at, and what it found; valid while it is being taken.
struct AnalysedFrame {
    std::uint64_t index;
    media::video::FrameBase<void const> const& frame;
    algorithm::video::Result const& result;
    /// For how long the source was away just before this frame.
    std::optional<std::chrono::nanoseconds> gap{};
};

/// What takes the frames of a run one by one, such as a writer of results.
class FrameSink {
public:
    FrameSink() = default;
    FrameSink(FrameSink const&) = delete;
    FrameSink& operator=(FrameSink const&) = delete;
    virtual ~FrameSink() = default;

    /// What the sink does, in one word, for the account of time.
    virtual std::string GetStage() const = 0;
    /// Throws Error when the frame cannot be taken; no further frame is offered then.
    virtual void Take(AnalysedFrame const& analysed) = 0;
    /// Called once after the last frame, also when the run ended early; completes what was begun.
    virtual void Finish() = 0;
};

}  // namespace qel::host
