#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "qel/configuration/node/map.hpp"

namespace qel::serve {

/// The nodes of one stream: "source", "loop", "enabled", "algorithms", "calibration", and "settings" with a map for
/// each of its algorithms.
struct StreamNodes {
    std::shared_ptr<configuration::node::Map> map;
    std::shared_ptr<configuration::node::Map> settings;

    /// Part of no tree yet.
    static StreamNodes Make(std::string const& id);
    /// Those of a stream in the map of all; null pointers when there is none.
    static StreamNodes Find(configuration::node::Map const& streams, std::string_view id);
    /// The child that is a map of exactly this name (which may hold dots); null when there is none.
    static std::shared_ptr<configuration::node::Map> FindChild(configuration::node::Map const& map,
                                                               std::string_view name);
};

}  // namespace qel::serve
