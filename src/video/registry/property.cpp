#include "qel/algorithm/video/registry/property.hpp"

#include "qel/configuration/node/map.hpp"

namespace qel::algorithm::video::registry {

Info::CreateNodes CreateNodes(Info::Properties properties) {
    return [properties = std::move(properties)](inference::backend::Manager& /*manager*/,
                                                std::shared_ptr<configuration::Node> const& node) {
        auto const map = configuration::Node::GetPtr<configuration::node::Map>(node);
        for (configuration::Property const& property : properties()) map->Schema(property.schemas);
    };
}

}  // namespace qel::algorithm::video::registry
