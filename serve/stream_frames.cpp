#include "stream_frames.hpp"

#include <functional>
#include <utility>

#include "working_frame.hpp"

namespace qel::serve {
namespace {

using Frame = host::FrameSource::Frame;
using Count = std::shared_ptr<std::atomic<std::int64_t>>;

/// Keeps a frame, and is counted for as long as it does.
class Held {
public:
    Held(Frame frame, Count count) : frame_(std::move(frame)), count_(std::move(count)) { ++*count_; }
    Held(Held const&) = delete;
    Held& operator=(Held const&) = delete;
    ~Held() { --*count_; }

private:
    Frame frame_;
    Count count_;
};

/// The same frame at another time, counted until the last that shares its pixels goes.
Frame Wrap(Frame const& frame, std::chrono::nanoseconds time, Count const& count) {
    // The callbacks themselves hold on to the pixels: they are copied with each frame that shares them.
    std::function<void()> const share = [held = std::make_shared<Held>(frame, count)] {};
    return {frame.GetPlanes(),
            frame.GetColourFormat(),
            frame.GetSize(),
            media::TimePoint(time),
            frame.GetRotation(),
            share,
            share};
}

}  // namespace

class StreamFrames::Source final : public host::FrameSource {
public:
    Source(StreamFrames& frames, host::FrameSource& source) : frames_(frames), source_(source) {}

    std::optional<Frame> Read() override {
        auto const frame = source_.Read();
        if (!frame) return std::nullopt;
        auto const now = Clock::now();
        gap_.reset();
        if (std::exchange(isFirst_, false) && frames_.lastFrame_) {
            gap_ = now - *frames_.lastFrame_;
            frames_.timeline_.Interrupt(*gap_);
        }
        frames_.lastFrame_ = now;
        return Wrap(*frame, frames_.timeline_.Place(frame->GetTimestamp().time_since_epoch()), frames_.held_);
    }

    std::optional<std::chrono::nanoseconds> GetGap() const override { return gap_ ? gap_ : source_.GetGap(); }
    host::Losses GetLosses() const override { return source_.GetLosses(); }
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override { return source_.GetFrameSize(); }
    double GetFrameRate() const noexcept override { return source_.GetFrameRate(); }
    bool IsLive() const noexcept override { return source_.IsLive(); }
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override { return source_.GetExpectedFrames(); }
    std::optional<std::string> GetWarning() const override { return source_.GetWarning(); }

private:
    StreamFrames& frames_;
    host::FrameSource& source_;
    bool isFirst_ = true;
    std::optional<std::chrono::nanoseconds> gap_;
};

std::unique_ptr<host::FrameSource> StreamFrames::Continue(host::FrameSource& source) {
    return std::make_unique<Source>(*this, source);
}

}  // namespace qel::serve
