#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qel/configuration/node/map.hpp"
#include "qel/type/binding.hpp"

namespace qel::serve {

/// Handlers that are told of changed paths, bound and called as those of a configuration node: see Node::Bind.
/// Any thread.
class Signal {
public:
    using Handler = std::function<void(std::vector<std::string> const&)>;

    type::Binding Bind(Handler handler);
    /// Calls all handlers on this thread; throws the first exception of one on when all have run.
    void Fire(std::vector<std::string> const& paths);

private:
    std::shared_ptr<configuration::node::Map> node_ = configuration::node::Map::Make("");
};

}  // namespace qel::serve
