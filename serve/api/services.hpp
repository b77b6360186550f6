#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "event_bus.hpp"
#include "http/assets.hpp"
#include "http/guard.hpp"
#include "http/router.hpp"
#include "store.hpp"
#include "stream_status.hpp"
#include "viewer.hpp"

namespace prometheus {
class Registry;
}

namespace qel::host {
class Runtime;
}

namespace qel::serve {
class Supervisor;
}

namespace qel::serve::api {

/// The running streams, as the endpoints ask for them.
struct Streams {
    std::function<std::vector<StreamStatus>()> list;
    std::function<std::optional<StreamStatus>(std::string_view id)> find;
    /// As Supervisor::Look.
    std::function<std::shared_ptr<Viewer>(std::string_view id, LookOptions options, std::function<void()> wake)> look;
};

/// Those of a supervisor, which outlives them.
Streams MakeStreams(Supervisor& supervisor);

/// What the endpoints stand on; all that is referred to outlives the routes.
struct Services {
    Store& store;
    Streams streams;
    EventBus& bus;
    prometheus::Registry& metrics;
    http::Guard& guard;
    http::Assets const& assets;
    /// Of the configuration's file: where calibrations are written.
    boost::filesystem::path folder;
    /// The document of GET /api/algorithms.
    std::string algorithms;
    std::string version;
    std::chrono::system_clock::time_point started = std::chrono::system_clock::now();
    /// Asked before the metrics are told; may be empty.
    std::function<void()> updateMetrics{};
};

/// Adds everything that the server answers.
void AddRoutes(http::Router& router, Services const& services);

/// The document of GET /api/algorithms: all that are registered. Calls what runtime allows on one thread at a time.
std::string MakeAlgorithmList(host::Runtime& runtime);

/// The description of the whole interface (OpenAPI 3.1), as JSON.
std::string_view GetOpenApi() noexcept;

}  // namespace qel::serve::api
