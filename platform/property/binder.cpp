#include "qel/property/binder.hpp"

#include <stdexcept>
#include <utility>

namespace qel::property {

Binder::Binder(std::shared_ptr<configuration::node::Map> map) : map_(std::move(map)) {
    if (!map_) throw std::invalid_argument("A binder of properties needs a map");
}

std::shared_ptr<configuration::node::Value> Binder::Find(std::string const& name) const {
    auto const node = map_->Find(name);
    return node ? node->GetPtr<configuration::node::Value>() : nullptr;
}

}  // namespace qel::property
