#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qel::serve {

/// What the thread of a stream is at, for those who wonder why it does not end. One thread sets it, any may ask.
class Activity {
public:
    enum class Kind { Waiting, MakingAlgorithms, Source, Algorithms, Publishing };

    using Clock = std::chrono::steady_clock;

    void Set(Kind kind) noexcept;
    /// Which algorithms there are, and the place of the one that is at work, which others keep up to date.
    void SetAlgorithms(std::vector<std::string> names, std::shared_ptr<std::atomic<std::size_t> const> place);

    /// Who keeps the thread: "the algorithm 'motion' has not returned".
    std::string Describe() const;
    /// Whether it has been at something other than waiting for so long.
    bool IsHanging(Clock::duration time) const noexcept;

private:
    std::atomic<Kind> kind_ = Kind::Waiting;
    std::atomic<Clock::rep> since_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> names_;
    std::shared_ptr<std::atomic<std::size_t> const> place_;
};

}  // namespace qel::serve
