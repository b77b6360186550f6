#pragma once

#include <condition_variable>
#include <cstdint>
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
    class Run;

    bool IsInside(std::thread::id thread) const noexcept;

    std::mutex mutex_;
    std::condition_variable left_;
    // The calls that are under way, the latest first. Each stands on the stack of its thread.
    Run* runs_ = nullptr;
    bool ended_ = false;
    // Emptied when the handler has ended and no thread is inside.
    Node::Handler function_;
};

/// The handlers bound to one node, in the order in which they were bound.
class HandlerList {
public:
    void Add(std::shared_ptr<BoundHandler> handler);
    void Remove(BoundHandler const& handler) noexcept;
    /// Calls the handlers that are bound now; keeps the first exception in error unless there is one already.
    void Call(std::shared_ptr<Event const> const& event, std::exception_ptr& error) const noexcept;

private:
    struct Entry {
        std::uint64_t number;
        std::shared_ptr<BoundHandler> handler;
    };

    /// The first handler numbered from first to last, both inclusive; none is left when its pointer is null.
    Entry Find(std::uint64_t first, std::uint64_t last) const noexcept;

    mutable std::mutex mutex_;
    // Numbered in the order in which they were bound, so that a walk finds its place again without a copy of the list.
    std::vector<Entry> handlers_;
    std::uint64_t lastNumber_ = 0;
};

}  // namespace qel::configuration::detail
