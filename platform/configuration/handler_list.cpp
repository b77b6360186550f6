#include "handler_list.hpp"

#include <algorithm>
#include <utility>

namespace qel::configuration::detail {

struct BoundHandler::Run {
    explicit Run(BoundHandler& owner) : handler(owner) {}
    Run(Run const&) = delete;
    Run& operator=(Run const&) = delete;
    ~Run() { handler.Leave(); }

    BoundHandler& handler;
};

void BoundHandler::Call(std::shared_ptr<Event const> event) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (ended_) return;
        threads_.push_back(std::this_thread::get_id());
    }
    Run const run(*this);
    function_(std::move(event));
}

void BoundHandler::Leave() noexcept {
    // Declared first, so that what the handler holds is destroyed without the lock.
    Node::Handler released;
    std::lock_guard<std::mutex> const lock(mutex_);
    threads_.erase(std::find(threads_.begin(), threads_.end(), std::this_thread::get_id()));
    if (!ended_) return;
    if (threads_.empty()) released.swap(function_);
    left_.notify_all();
}

void BoundHandler::End() noexcept {
    Node::Handler released;
    std::unique_lock<std::mutex> lock(mutex_);
    ended_ = true;
    auto const self = std::this_thread::get_id();
    if (std::find(threads_.begin(), threads_.end(), self) != threads_.end()) return;
    left_.wait(lock, [this] { return threads_.empty(); });
    released.swap(function_);
}

std::shared_ptr<BoundHandler> HandlerList::Add(Node::Handler function) {
    auto handler = std::make_shared<BoundHandler>(std::move(function));
    std::lock_guard<std::mutex> const lock(mutex_);
    handlers_.push_back(handler);
    return handler;
}

void HandlerList::Remove(BoundHandler const& handler) noexcept {
    std::lock_guard<std::mutex> const lock(mutex_);
    std::erase_if(handlers_, [&](auto const& bound) { return bound.get() == &handler; });
}

void HandlerList::Call(std::shared_ptr<Event const> const& event, std::exception_ptr& error) const {
    std::vector<std::shared_ptr<BoundHandler>> handlers;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        handlers = handlers_;
    }
    for (auto const& handler : handlers) {
        try {
            handler->Call(event);
        } catch (...) {
            if (!error) error = std::current_exception();
        }
    }
}

}  // namespace qel::configuration::detail
