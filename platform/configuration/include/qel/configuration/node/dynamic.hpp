#pragma once

#include <vector>

#include "qel/configuration/node.hpp"
#include "qel/configuration/node/change.hpp"

namespace qel::configuration::node {

/// A node that entries can be added to while the program runs. Any thread, as every node.
class QEL_CONFIGURATION_EXPORT Dynamic : public Node {
public:
    /// Adds an entry for each change, in their order: all of them, or none when one is refused.
    virtual void Add(std::vector<Change> changes) = 0;

protected:
    using Node::Node;
};

}  // namespace qel::configuration::node

template <>
struct qel::type::Name<qel::configuration::node::Dynamic> {
    static constexpr char const* Value = "qel.configuration.node.Dynamic";
};
