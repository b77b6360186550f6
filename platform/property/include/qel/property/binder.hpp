#pragma once

#include <memory>
#include <string>

#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/value.hpp"
#include "qel/property/export.hpp"

namespace qel::property {

/// Ties properties to configuration nodes of their names below a map, needed only while they are made. Any thread.
class QEL_PROPERTY_EXPORT Binder {
public:
    /// Throws std::invalid_argument for a null map.
    explicit Binder(std::shared_ptr<configuration::node::Map> map);

    /// The node that a property of that name is tied to, or null when the map has none; throws object::BadCast for a
    /// node that has no value.
    std::shared_ptr<configuration::node::Value> Find(std::string const& name) const;

private:
    std::shared_ptr<configuration::node::Map> map_;
};

}  // namespace qel::property
