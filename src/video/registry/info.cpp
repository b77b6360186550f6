#include "qel/algorithm/video/registry/info.hpp"

#include <utility>

namespace qel::algorithm::video::registry {

Info::Info(hash::MurmurThree32 typeNameId, char const* typeName, Make make, Properties properties,
           CreateNodes createConfigNodes) noexcept
    : typeNameId_(typeNameId),
      typeName_(typeName),
      make_(std::move(make)),
      properties_(std::move(properties)),
      createConfigNodes_(std::move(createConfigNodes)) {}

std::vector<configuration::Property> const& Info::GetProperties() const noexcept {
    if (properties_) return properties_();
    static std::vector<configuration::Property> const EmptyProperties;
    return EmptyProperties;
}

void Info::CreateConfigNodes(inference::backend::Manager& manager, std::shared_ptr<configuration::Node> node) const {
    if (createConfigNodes_) createConfigNodes_(manager, std::move(node));
}

}  // namespace qel::algorithm::video::registry
