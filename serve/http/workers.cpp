#include "http/workers.hpp"

#include <utility>

namespace qel::serve::http {

Workers::Workers(std::size_t threads) {
    for (std::size_t i = 0; i < threads; ++i) threads_.emplace_back([this] { Run(); });
}

Workers::~Workers() { Stop(); }

void Workers::Do(std::function<void()> job) {
    {
        std::lock_guard const lock(mutex_);
        if (stopped_) return;
        jobs_.push_back(std::move(job));
    }
    changed_.notify_one();
}

bool Workers::Stop(std::optional<std::chrono::steady_clock::time_point> deadline) {
    std::deque<std::function<void()>> dropped;
    {
        std::unique_lock lock(mutex_);
        stopped_ = true;
        dropped.swap(jobs_);
        changed_.notify_all();
        if (deadline && !done_.wait_until(lock, *deadline, [this] { return busy_ == 0; })) return false;
    }
    for (std::thread& thread : threads_) {
        if (thread.joinable()) thread.join();
    }
    return true;
}

void Workers::Run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stopped_ || !jobs_.empty(); });
        if (stopped_) return;
        auto job = std::move(jobs_.front());
        jobs_.pop_front();
        ++busy_;
        lock.unlock();
        job();
        job = nullptr;  // what it holds may take locks of its own when it goes
        lock.lock();
        if (--busy_ == 0) done_.notify_all();
    }
}

}  // namespace qel::serve::http
