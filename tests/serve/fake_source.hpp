#pragma once

#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "frame_source.hpp"
#include "working_frame.hpp"

namespace qel::serve::test {

/// A grey frame of one brightness.
inline host::FrameSource::Frame MakeGreyFrame(std::chrono::nanoseconds time, std::uint8_t level = 50,
                                              unsigned int width = 16, unsigned int height = 8) {
    media::video::FrameBase<void> const frame(media::ColourFormat::Grey8, width, height, media::TimePoint(time), {});
    std::memset(frame.GetPlane(0).GetBuffer(), level, frame.GetPlane(0).GetSize());
    return host::MakeReadOnly(frame);
}

/// Gives what a function makes up.
class FakeSource final : public host::FrameSource {
public:
    using Make = std::function<std::optional<Frame>()>;

    explicit FakeSource(Make make, bool live = false) : make_(std::move(make)), live_(live) {}

    std::optional<Frame> Read() override { return make_(); }
    std::optional<std::chrono::nanoseconds> GetGap() const override { return std::nullopt; }
    host::Losses GetLosses() const override { return losses; }
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override { return {16, 8}; }
    double GetFrameRate() const noexcept override { return 25; }
    bool IsLive() const noexcept override { return live_; }
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override { return std::nullopt; }
    std::optional<std::string> GetWarning() const override { return std::nullopt; }

    host::Losses losses{};

private:
    Make make_;
    bool live_;
};

/// A source of so many frames, 40 ms apart, from time zero on.
inline std::unique_ptr<FakeSource> MakeFrames(int count) {
    return std::make_unique<FakeSource>([count, next = 0]() mutable -> std::optional<host::FrameSource::Frame> {
        if (next == count) return std::nullopt;
        return MakeGreyFrame(std::chrono::milliseconds(40 * next++));
    });
}

}  // namespace qel::serve::test
