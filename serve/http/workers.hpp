#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace qel::serve::http {

/// A few threads that do one thing after the other. Any thread.
class Workers {
public:
    explicit Workers(std::size_t threads);
    Workers(Workers const&) = delete;
    Workers& operator=(Workers const&) = delete;
    /// As Stop.
    ~Workers();

    /// Does a thing when its turn comes; it must not throw. Nothing happens any more after Stop.
    void Do(std::function<void()> job);
    /// Waits for what is being done and drops what is not begun. deadline: when it gives up waiting, to be called
    /// again; says whether everything was done.
    bool Stop(std::optional<std::chrono::steady_clock::time_point> deadline = std::nullopt);

private:
    void Run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> jobs_;
    bool stopped_ = false;
    std::size_t busy_ = 0;
    std::condition_variable done_;
    std::vector<std::thread> threads_;
};

}  // namespace qel::serve::http
