#include "qel/algorithm/video/registry/publish.hpp"

#include <exception>
#include <utility>

#include "qel/algorithm/info_builder.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::algorithm::video::registry {
namespace {

using configuration::Node;
using configuration::node::Map;

/// The topmost node above; null for a node that stands alone.
std::shared_ptr<Node> FindRoot(Node const& node) {
    std::shared_ptr<Node> root;
    for (auto next = node.GetParent(); next; next = next->GetParent()) root = next;
    return root;
}

bool IsPublished(Node const& root, info::Base const& info) {
    if (!root.Is<Map>()) return false;  // the builder says what is wrong with it
    auto const typeName =
        root.As<Map>().Find("algorithms.info." + info.GetName() + "." + std::string(info::TypenameNode));
    using Text = configuration::node::Primitive<std::string>;
    return typeName && typeName->Is<Text>() && typeName->As<Text>().Get() == info.GetTypename();
}

}  // namespace

PublishError::PublishError(std::string const& reason) : std::runtime_error(reason) {}

PublishError::~PublishError() = default;

void Publish(inference::backend::Manager& manager, Node const& node, Describe const& describe) {
    auto const root = FindRoot(node);
    if (!root) return;
    try {
        auto info = describe(*root);
        // The builder would have the manager tell of the models a second time before it found the name taken.
        if (info && IsPublished(*root, *info)) return;
        InfoBuilder::Register(manager, std::move(info));
    } catch (std::exception const& error) {
        throw PublishError(error.what());
    }
}

Info::CreateNodes CreateNodes(Info::Properties properties, Describe describe) {
    return [create = CreateNodes(std::move(properties)), describe = std::move(describe)](
               inference::backend::Manager& manager, std::shared_ptr<Node> const& node) {
        create(manager, node);
        Publish(manager, *node, describe);
    };
}

}  // namespace qel::algorithm::video::registry
