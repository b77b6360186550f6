#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "algorithm_chain.hpp"
#include "event_bus.hpp"
#include "frame_source.hpp"
#include "qel/media/colour_format.hpp"
#include "reconnecting_source.hpp"
#include "stream_metrics.hpp"
#include "stream_spec.hpp"
#include "stream_status.hpp"
#include "viewer.hpp"

namespace qel::serve {

/// What a stream is made with.
struct StreamParts {
    /// Opens the stream's source in one of the formats, most wanted first, and waits for its first frame. stop: asked
    /// while waiting; true ends the source. say: told when the source is lost and tries to come back of itself.
    using Open = std::function<std::unique_ptr<host::FrameSource>(
        StreamSpec const&, std::vector<media::ColourFormat> const&, std::function<bool()> const& stop,
        host::ReconnectingSource::Say const& say)>;
    /// Makes the algorithms that the stream names, of which there is at least one.
    using MakeAlgorithms = std::function<std::unique_ptr<host::AlgorithmChain>(StreamSpec const&)>;

    Open open;
    MakeAlgorithms makeAlgorithms;
    /// Outlives the stream.
    EventBus& bus;
    std::shared_ptr<StreamMetrics> metrics;
    /// The pauses between attempts, and after how many frames an attempt counts as a good one.
    host::ReconnectPolicy retry{.goodFrames = 250};
    /// After which an algorithm, or a source, that does not return is told of; what a live source has to say of itself
    /// comes first.
    std::chrono::milliseconds patience{15'000};
};

/// One stream, on a thread of its own: its frames are taken from the source at their pace, looked at by the algorithms
/// and told to the bus, the metrics and whoever looks. What fails is started again after a pause that grows. Any
/// thread.
class Stream {
public:
    /// former: a stream of the same name that was told to stop; this one begins when it has ended; may be null.
    Stream(StreamSpec spec, StreamParts parts, std::shared_ptr<Stream> former = nullptr);
    Stream(Stream const&) = delete;
    Stream& operator=(Stream const&) = delete;
    /// Stops it, and waits for that.
    ~Stream();

    /// Does from now on what this says, which bears the same name; starts anew where it has to.
    void Follow(StreamSpec spec);
    /// Ends the stream soon, without waiting for it; for its viewers it is gone.
    void RequestStop();
    bool HasEnded() const;
    /// Waits for the end until then at the latest, and says whether it has come.
    bool WaitForEnd(std::chrono::steady_clock::time_point deadline) const;
    /// What it is at, as who keeps it from ending: "the algorithm 'motion' has not returned".
    std::string DescribeActivity() const;

    StreamStatus GetStatus() const;
    std::shared_ptr<Viewer> Look(LookOptions const& options, std::function<void()> wake);
    /// Looks whether an algorithm or the source has not returned for long; the stream is waiting then, until it does.
    /// To be called now and then.
    void LookAfter();
    /// Brings the metrics up to date with what no frame tells of.
    void RefreshMetrics() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve
