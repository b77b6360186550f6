#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qel/configuration/node/map.hpp"

namespace qel::serve {

/// What one stream is to do, as its part of the configuration says.
struct StreamSpec {
    /// Letters, digits, '_' and '-', at most 64.
    std::string id{};
    /// A file (relative ones have been made absolute, from the folder of the configuration's file) or a URI.
    std::string source{};
    /// A file begins anew when it ends.
    bool loop = false;
    bool enabled = true;
    /// Names of algorithms as `qel run --algorithm` takes them, in the order in which they run.
    std::vector<std::string> algorithms{};
    /// A calibration file, made absolute as the source is; empty for none.
    std::string calibration{};
    /// The nodes of each algorithm's settings in this stream, by the names above: "streams.<id>.settings.<Name>".
    std::map<std::string, std::shared_ptr<configuration::node::Map>> settings{};

    /// Whether the stream has to be started anew to get from one to the other; settings take effect while it runs.
    bool NeedsRestart(StreamSpec const& other) const;
};

}  // namespace qel::serve
