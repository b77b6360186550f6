#include "handler_list.hpp"

#include <algorithm>
#include <utility>

namespace qel::configuration::detail {

// A call that is under way: one of the handler's list for as long as it lives.
class BoundHandler::Run {
public:
    // The handler's mutex is held.
    explicit Run(BoundHandler& handler) noexcept : handler_(handler), next_(std::exchange(handler.runs_, this)) {}
    Run(Run const&) = delete;
    Run& operator=(Run const&) = delete;
    ~Run() {
        // Declared first, so that what the handler holds is destroyed without the lock.
        Node::Handler released;
        std::lock_guard<std::mutex> const lock(handler_.mutex_);
        Run** link = &handler_.runs_;
        while (*link != this) link = &(*link)->next_;
        *link = next_;
        if (!handler_.ended_) return;
        if (handler_.runs_ == nullptr) released.swap(handler_.function_);
        handler_.left_.notify_all();
    }

    std::thread::id GetThread() const noexcept { return thread_; }
    Run const* GetNext() const noexcept { return next_; }

private:
    BoundHandler& handler_;
    std::thread::id const thread_ = std::this_thread::get_id();
    Run* next_;
};

bool BoundHandler::IsInside(std::thread::id thread) const noexcept {
    Run const* run = runs_;
    while (run != nullptr && run->GetThread() != thread) run = run->GetNext();
    return run != nullptr;
}

void BoundHandler::Call(std::shared_ptr<Event const> event) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (ended_) return;
    Run const run(*this);
    lock.unlock();
    function_(std::move(event));
}

void BoundHandler::End() noexcept {
    Node::Handler released;
    std::unique_lock<std::mutex> lock(mutex_);
    ended_ = true;
    if (IsInside(std::this_thread::get_id())) return;
    left_.wait(lock, [this] { return runs_ == nullptr; });
    released.swap(function_);
}

void HandlerList::Add(std::shared_ptr<BoundHandler> handler) {
    std::lock_guard<std::mutex> const lock(mutex_);
    handlers_.push_back({lastNumber_ + 1, std::move(handler)});
    ++lastNumber_;
}

void HandlerList::Remove(BoundHandler const& handler) noexcept {
    std::lock_guard<std::mutex> const lock(mutex_);
    std::erase_if(handlers_, [&](Entry const& entry) { return entry.handler.get() == &handler; });
}

HandlerList::Entry HandlerList::Find(std::uint64_t first, std::uint64_t last) const noexcept {
    std::lock_guard<std::mutex> const lock(mutex_);
    auto const found = std::lower_bound(handlers_.begin(), handlers_.end(), first,
                                        [](Entry const& entry, std::uint64_t number) { return entry.number < number; });
    return found == handlers_.end() || found->number > last ? Entry{} : *found;
}

void HandlerList::Call(std::shared_ptr<Event const> const& event, std::exception_ptr& error) const noexcept {
    std::uint64_t last = 0;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        last = lastNumber_;
    }
    for (Entry entry = Find(0, last); entry.handler; entry = Find(entry.number + 1, last)) {
        try {
            entry.handler->Call(event);
        } catch (...) {
            if (!error) error = std::current_exception();
        }
    }
}

}  // namespace qel::configuration::detail
