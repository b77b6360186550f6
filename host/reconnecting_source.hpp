#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backoff.hpp"
#include "frame_source.hpp"
#include "timeline.hpp"

namespace qel::host {

/// How to get a lost source back.
struct ReconnectPolicy {
    /// How many connections in a row may fail before the source is given up; nothing: it never is.
    std::optional<std::uint64_t> attempts{};
    std::chrono::milliseconds firstWait{500};
    std::chrono::milliseconds longestWait{30000};
    /// Frames after which a connection counts as a good one: waits and attempts begin anew.
    std::uint64_t goodFrames = 10;
};

/// What is told of a source that is opened again and again.
enum class SourceNews { Lost, Back };

/// A source that is opened again whenever it ends, fails or falls silent, so that its frames go on.
///
/// Times of frames go on as well: the first frame after an interruption is as much later than the last one before it
/// as this machine's clock says.
class ReconnectingSource final : public FrameSource {
public:
    /// What makes a new connection and waits for its first frame; throws LostError when it may be tried again.
    using Open = std::function<std::unique_ptr<FrameSource>()>;
    using Say = std::function<void(SourceNews news, std::string const& line)>;

    /// Opens the source and waits for its first frame, over as many connections as it takes.
    /// name: what to call the source; stop: asked while waiting, true ends the source; say: told of each loss,
    /// each attempt that failed and each return, as one line. Throws Error when the source cannot be opened for a
    /// reason that will not pass.
    ReconnectingSource(std::string name, Open open, ReconnectPolicy const& policy, std::function<bool()> stop, Say say);

    /// Nothing only when told to stop. Throws Error when the source is given up.
    std::optional<Frame> Read() override;

    std::optional<std::chrono::nanoseconds> GetGap() const override { return gap_; }
    /// An interruption that still goes on is counted with the time that it has lasted.
    Losses GetLosses() const override;
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override;
    double GetFrameRate() const noexcept override { return frameRate_; }
    /// As the first connection was.
    bool IsLive() const noexcept override { return isLive_; }
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override { return std::nullopt; }
    std::optional<std::string> GetWarning() const override { return std::nullopt; }

private:
    using Clock = std::chrono::steady_clock;

    std::optional<Frame> Pull();
    std::optional<Frame> PullOnce();
    Frame Take(Frame const& frame);
    void Lose(std::string const& reason, bool silent);
    void Wait(std::chrono::milliseconds time) const;

    std::string name_;
    Open open_;
    ReconnectPolicy policy_;
    std::function<bool()> stop_;
    Say say_;
    std::unique_ptr<FrameSource> source_;
    Backoff backoff_;
    Timeline timeline_;
    Losses losses_;
    std::optional<Frame> first_;
    geometry::Dimension<unsigned int, 2> firstSize_;
    double frameRate_ = 0;
    bool isLive_ = false;
    std::optional<std::chrono::nanoseconds> gap_;
    /// When the last frame came.
    std::optional<Clock::time_point> lastFrame_;
    bool away_ = false;
    std::uint64_t framesOfConnection_ = 0;
    std::uint64_t attemptsInARow_ = 0;
};

}  // namespace qel::host
