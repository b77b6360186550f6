#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace qel::host {

/// The text of a progress bar: how many frames are done, how many a second and how long it will take yet.
/// total: how many there will be, if that is known; width: in characters, never exceeded.
std::string MakeProgressLine(std::uint64_t frames, std::optional<std::uint64_t> total, std::chrono::nanoseconds elapsed,
                             std::size_t width);

/// Shows a progress bar on the standard error output when that is a terminal; otherwise does nothing.
class Progress {
public:
    /// wanted: false for a bar that is never shown.
    Progress(std::optional<std::uint64_t> total, bool wanted);
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;
    /// Takes the bar away.
    ~Progress();

    void Update(std::uint64_t frames);
    /// Takes the bar away until the next update, so that something else can be said.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    std::optional<std::uint64_t> total_;
    bool shown_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_{};
};

}  // namespace qel::host
