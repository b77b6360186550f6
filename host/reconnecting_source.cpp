#include "reconnecting_source.hpp"

#include <algorithm>
#include <thread>
#include <utility>

#include "error.hpp"
#include "text.hpp"
#include "working_frame.hpp"

namespace qel::host {
namespace {

/// How often a wait looks whether it shall end.
constexpr std::chrono::milliseconds PollTime{20};

/// A reason that more is to follow.
std::string WithoutStop(std::string text) {
    if (!text.empty() && text.back() == '.') text.pop_back();
    return text;
}

std::string Seconds(std::chrono::nanoseconds time) {
    return FormatNumber(std::chrono::duration<double>(time).count(), 1) + " s";
}

}  // namespace

ReconnectingSource::ReconnectingSource(std::string name, Open open, ReconnectPolicy const& policy,
                                       std::function<bool()> stop, Say say)
    : name_(std::move(name)),
      open_(std::move(open)),
      policy_(policy),
      stop_(std::move(stop)),
      say_(std::move(say)),
      backoff_(policy.firstWait, policy.longestWait) {
    first_ = Pull();
    if (first_) firstSize_ = first_->GetSize();
    if (!source_) return;
    frameRate_ = source_->GetFrameRate();
    isLive_ = source_->IsLive();
}

std::optional<FrameSource::Frame> ReconnectingSource::Read() {
    if (first_) return std::exchange(first_, std::nullopt);
    return Pull();
}

std::optional<FrameSource::Frame> ReconnectingSource::Pull() {
    gap_.reset();
    while (!stop_()) {
        std::string reason = "'" + name_ + "' ended";
        bool silent = false;
        try {
            if (auto frame = PullOnce()) return frame;
        } catch (LostError const& error) {
            reason = error.what();
            silent = error.IsSilent();
        } catch (Error const& error) {
            // What gave frames before is worth another try, whatever is wrong with it now.
            if (!lastFrame_) throw;
            reason = error.what();
        }
        if (!stop_()) Lose(reason, silent);
    }
    return std::nullopt;
}

std::optional<FrameSource::Frame> ReconnectingSource::PullOnce() {
    if (!source_) source_ = open_();
    auto const frame = source_->Read();
    if (!frame) return std::nullopt;
    return Take(*frame);
}

FrameSource::Frame ReconnectingSource::Take(Frame const& frame) {
    auto const now = Clock::now();
    if (away_) {
        gap_ = now - *lastFrame_;
        timeline_.Interrupt(*gap_);
        losses_.away += *gap_;
        ++losses_.returns;
        away_ = false;
        say_(SourceNews::Back, "'" + name_ + "' is back after " + Seconds(*gap_));
    }
    lastFrame_ = now;
    if (++framesOfConnection_ == policy_.goodFrames) {
        backoff_.Reset();
        attemptsInARow_ = 0;
    }
    auto const time = timeline_.Place(frame.GetTimestamp().time_since_epoch());
    return WithTimestamp(frame, media::TimePoint(time));
}

void ReconnectingSource::Lose(std::string const& reason, bool silent) {
    if (source_) losses_.droppedFrames += source_->GetLosses().droppedFrames;
    source_.reset();
    if (framesOfConnection_ != 0) {
        ++losses_.interruptions;
        if (silent) ++losses_.stalls;
        away_ = true;
    }
    framesOfConnection_ = 0;
    if (policy_.attempts && attemptsInARow_ == *policy_.attempts) {
        throw Error("gave up after " + std::to_string(attemptsInARow_) +
                    (attemptsInARow_ == 1 ? " attempt" : " attempts") + " to reconnect: " + reason);
    }
    ++attemptsInARow_;
    ++losses_.attempts;
    auto const wait = backoff_.Next();
    say_(SourceNews::Lost, WithoutStop(reason) + "; trying again in " + Seconds(wait));
    Wait(wait);
}

void ReconnectingSource::Wait(std::chrono::milliseconds time) const {
    auto const end = Clock::now() + time;
    while (!stop_() && Clock::now() < end) {
        std::this_thread::sleep_for(std::min<Clock::duration>(PollTime, end - Clock::now()));
    }
}

Losses ReconnectingSource::GetLosses() const {
    Losses losses = losses_;
    if (away_) losses.away += Clock::now() - *lastFrame_;
    if (source_) losses.droppedFrames += source_->GetLosses().droppedFrames;
    return losses;
}

geometry::Dimension<unsigned int, 2> ReconnectingSource::GetFrameSize() const noexcept { return firstSize_; }

}  // namespace qel::host
