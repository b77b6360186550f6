#pragma once

#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "qel/configuration/node.hpp"

namespace qel::configuration::detail {

/// One bound handler: runs it, and ends it so that it surely does not run any more.
class BoundHandler {
public:
    explicit BoundHandler(Node::Handler function) : function_(std::move(function)) {}

    /// Calls the handler unless it has been ended; passes its exception on.
    void Call(std::shared_ptr<Event const> event);
    /// Ends the handler: waits until it runs on no thread, but does not wait when called from inside the handler.
    void End() noexcept;

private:
    struct Run;

    void Leave() noexcept;

    std::mutex mutex_;
    std::condition_variable left_;
    // The threads that are inside the handler; a thread stands in it once for each call.
    std::vector<std::thread::id> threads_;
    bool ended_ = false;
    // Emptied when the handler has ended and no thread is inside.
    Node::Handler function_;
};

/// The handlers bound to one node, in the order in which they were bound.
class HandlerList {
public:
    std::shared_ptr<BoundHandler> Add(Node::Handler function);
    void Remove(BoundHandler const& handler) noexcept;
    /// Calls the handlers that are bound now; keeps the first exception in error unless there is one already.
    void Call(std::shared_ptr<Event const> const& event, std::exception_ptr& error) const;

private:
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<BoundHandler>> handlers_;
};

}  // namespace qel::configuration::detail
