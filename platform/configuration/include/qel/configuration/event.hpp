#pragma once

#include <memory>
#include <utility>

namespace qel::configuration {

class Node;

/// What a handler is told when a node fires. It keeps the node alive.
class Event {
public:
    explicit Event(std::shared_ptr<Node> node) noexcept : node_(std::move(node)) {}

    /// The node that fired; its value may have changed again since.
    Node& GetNode() const noexcept { return *node_; }

private:
    std::shared_ptr<Node> node_;
};

}  // namespace qel::configuration
