#pragma once

namespace qel::configuration {

class Node;

/// What a handler is told when a node fires. The shared pointer that handlers get keeps the node alive.
///
/// Threads: any, at any time.
class Event {
public:
    /// Part of the node, so that firing takes no memory.
    explicit Event(Node& node) noexcept : node_(node) {}
    Event(Event const&) = delete;
    Event& operator=(Event const&) = delete;

    /// The node that fired; its value may have changed again since.
    Node& GetNode() const noexcept { return node_; }

private:
    Node& node_;
};

}  // namespace qel::configuration
