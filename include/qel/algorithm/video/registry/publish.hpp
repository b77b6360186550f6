#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/info/base.hpp"
#include "qel/algorithm/video/registry/info.hpp"
#include "qel/configuration/node.hpp"
#include "qel/inference/backend/manager.hpp"

namespace qel::algorithm::video::registry {

/// Makes the descriptor of an algorithm for the root of a configuration tree.
using Describe = std::function<std::shared_ptr<info::Base>(configuration::Node& root)>;

/// A descriptor could not be published; the text says why. The algorithm itself may be used all the same.
class QEL_ALGORITHM_EXPORT PublishError : public std::runtime_error {
public:
    /// reason: what what() says.
    explicit PublishError(std::string const& reason);
    ~PublishError() override;
};

/// Publishes an algorithm's descriptor in the tree that its own map is part of: below "algorithms.info" of the topmost
/// node above, where InfoBuilder::Register puts it.
///
/// Does nothing for a map that stands alone, and when that tree holds a descriptor of the same name and typename: an
/// algorithm may be made twice. Throws PublishError for whatever goes wrong. Any thread, one call at a time in a tree,
/// as hosts make them who hold the registry's lock.
QEL_ALGORITHM_EXPORT void Publish(inference::backend::Manager& manager, configuration::Node const& node,
                                  Describe const& describe);

/// The function of an Info that creates the configuration nodes of all properties under a map node, and then publishes
/// the algorithm's descriptor. properties: as in the Info; describe: as for Publish; neither is empty.
QEL_ALGORITHM_EXPORT Info::CreateNodes CreateNodes(Info::Properties properties, Describe describe);

}  // namespace qel::algorithm::video::registry
